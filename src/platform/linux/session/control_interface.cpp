// SPDX-License-Identifier: MIT
#include "platform/linux/session/control_interface.h"

#include <QFile>
#include <utility>

namespace sordin {

namespace {

const QString confidenceProperty = QStringLiteral("Confidence");

/// Returns the interface element of the installed description, with its comments.
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

}  // namespace

ControlInterface::ControlInterface(ApplicationService& service, Program program,
                                   std::chrono::milliseconds switchInterval)
    : service_(service), program_(std::move(program)), told_(properties()) {
    pause_.setSingleShot(true);
    pause_.setInterval(switchInterval);
    connect(&pause_, &QTimer::timeout, this, &ControlInterface::switchNow);
    const auto restore = [this](const QDBusMessage& call) {
        program_.restoreVolume();
        return call.createReply();
    };
    const auto toggle = [this](const QDBusMessage& call) {
        setEnabled(!enabled());
        return call.createReply(enabled());
    };
    service_.object().add(
        QLatin1String(name),
        {interfaceDescription(),
         {{QStringLiteral("RestoreNow"), {{}, restore}}, {QStringLiteral("Toggle"), {{}, toggle}}},
         [this] { return properties(); },
         {{QStringLiteral("Enabled"), [this](const QVariant& value) { setEnabled(value.toBool()); }},
          {QStringLiteral("TunedDetection"),
           [this](const QVariant& value) { program_.setTunedDetection(value.toBool()); }},
          {QStringLiteral("IgnoredApplications"),
           [this](const QVariant& value) { program_.setIgnoredApplications(value.toStringList()); }}}});
    service_.setActions(
        {{QStringLiteral("RestoreVolume"), [this](bool /*starts*/) { program_.restoreVolume(); }},
         {QStringLiteral("ToggleEnabled"), [this](bool starts) {
              // A user who starts the program with this action does not want to disable it.
              setEnabled(starts || !enabled());
          }}});
}

ControlInterface::~ControlInterface() {
    switchNow();
    service_.setActions({});
    service_.object().remove(QLatin1String(name));
}

void ControlInterface::setEnabled(bool enabled) {
    wanted_ = enabled;
    if (!pause_.isActive()) {
        switchNow();
    }
}

void ControlInterface::switchNow() {
    if (const auto wanted = std::exchange(wanted_, std::nullopt)) {
        if (*wanted != program_.state().enabled) {
            pause_.start();
        }
        program_.setEnabled(*wanted);
    }
}

QVariantMap ControlInterface::properties() const {
    const State state = program_.state();
    return {{QStringLiteral("Status"), state.status},
            {QStringLiteral("StatusText"), state.statusText},
            {QStringLiteral("Enabled"), enabled()},
            {QStringLiteral("AdActive"), state.adActive},
            {QStringLiteral("Faded"), state.faded},
            {QStringLiteral("Source"), state.source},
            {confidenceProperty, state.confidence},
            {QStringLiteral("TunedDetection"), state.tunedDetection},
            {QStringLiteral("Call"), state.call},
            {QStringLiteral("IgnoredApplications"), state.ignoredApplications}};
}

void ControlInterface::stateChanged() {
    // Queued, so that several changes at once lead to one signal.
    QMetaObject::invokeMethod(
        this, [this] { tell(); }, Qt::QueuedConnection);
}

void ControlInterface::tell() {
    const QVariantMap now = properties();
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
