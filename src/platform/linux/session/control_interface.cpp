// SPDX-License-Identifier: MIT
#include "platform/linux/session/control_interface.h"

#include <QFile>
#include <utility>

namespace sordin {

namespace {

const QString confidenceProperty = QStringLiteral("Confidence");

/// The interface alone, with its comments, out of what is installed.
QString interfaceDescription() {
    QFile file(QStringLiteral(":/dbus/org.sordin.Sordin1.xml"));
    if (!file.open(QIODevice::ReadOnly)) {
        return {};
    }
    const QString whole = QString::fromUtf8(file.readAll());
    const QString end = QStringLiteral("</interface>");
    const auto begin = whole.indexOf(QStringLiteral("<interface "));
    return whole.mid(begin, whole.indexOf(end) + end.size() - begin);
}

QVariantMap propertiesOf(const ControlInterface::State& state) {
    return {
        {QStringLiteral("Status"), state.status},   {QStringLiteral("StatusText"), state.statusText},
        {QStringLiteral("Enabled"), state.enabled}, {QStringLiteral("AdActive"), state.adActive},
        {QStringLiteral("Faded"), state.faded},     {QStringLiteral("Source"), state.source},
        {confidenceProperty, state.confidence},     {QStringLiteral("TunedDetection"), state.tunedDetection}};
}

}  // namespace

ControlInterface::ControlInterface(ApplicationService& service, Program program)
    : service_(service), program_(std::move(program)), told_(propertiesOf(program_.state())) {
    const auto restore = [this](const QDBusMessage& call) {
        program_.restoreVolume();
        return call.createReply();
    };
    const auto toggle = [this](const QDBusMessage& call) {
        program_.setEnabled(!program_.state().enabled);
        return call.createReply(program_.state().enabled);
    };
    service_.object().add(
        QLatin1String(name),
        {interfaceDescription(),
         {{QStringLiteral("RestoreNow"), {{}, restore}}, {QStringLiteral("Toggle"), {{}, toggle}}},
         [this] { return propertiesOf(program_.state()); },
         {{QStringLiteral("Enabled"), [this](const QVariant& value) { program_.setEnabled(value.toBool()); }},
          {QStringLiteral("TunedDetection"),
           [this](const QVariant& value) { program_.setTunedDetection(value.toBool()); }}}});
    service_.setActions(
        {{QStringLiteral("RestoreVolume"), [this](bool /*starts*/) { program_.restoreVolume(); }},
         {QStringLiteral("ToggleEnabled"), [this](bool starts) {
              // Who starts the program by it does not want it switched off.
              program_.setEnabled(starts || !program_.state().enabled);
          }}});
}

ControlInterface::~ControlInterface() {
    service_.setActions({});
    service_.object().remove(QLatin1String(name));
}

void ControlInterface::stateChanged() {
    // Later, since several things may be about to change. The first telling has all of it.
    QMetaObject::invokeMethod(
        this, [this] { tell(); }, Qt::QueuedConnection);
}

void ControlInterface::tell() {
    const QVariantMap now = propertiesOf(program_.state());
    QVariantMap changed;
    for (auto each = now.begin(); each != now.end(); ++each) {
        if (each.key() != confidenceProperty && each.value() != told_.value(each.key())) {
            changed.insert(each.key(), each.value());
        }
    }
    told_ = now;
    if (!changed.isEmpty()) {
        service_.object().tellChanged(QLatin1String(name), changed);
    }
}

}  // namespace sordin
