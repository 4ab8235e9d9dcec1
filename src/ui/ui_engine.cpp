// SPDX-License-Identifier: MIT
#include "ui/ui_engine.h"

#include "engine/sordin_engine.h"
#include "ui/style/symbol_provider.h"
#include "ui/wording/wording_catalogue.h"

#include <QCoreApplication>
#include <QQmlComponent>
#include <stdexcept>

// The registration functions of the statically linked modules. The explicit calls keep the linker from
// dropping them.
// NOLINTBEGIN(readability-identifier-naming): Qt's names
void qml_register_types_Sordin();
void qml_register_types_Sordin_Model();
void qml_register_types_Sordin_Style();
// NOLINTEND(readability-identifier-naming)

namespace sordin {

UiEngine::UiEngine() {
    Appearance::use(&appearance_);
    qml_.addImportPath(QStringLiteral("qrc:/qt/qml"));
    // NOLINTNEXTLINE(cppcoreguidelines-owning-memory): the engine owns it
    qml_.addImageProvider(QStringLiteral("symbol"), new SymbolProvider);
}

UiEngine::~UiEngine() {
    Appearance::use(nullptr);
}

void UiEngine::prepare() {
    qml_register_types_Sordin_Style();
    qml_register_types_Sordin_Model();
    qml_register_types_Sordin();
    QQuickWindow::setGraphicsApi(QSGRendererInterface::Software);
    // NOLINTNEXTLINE(cppcoreguidelines-owning-memory): the application owns it
    auto* wording = new WordingCatalogue(qApp);
    if (wording->read(QStringLiteral(":/wording/linux.ts"))) {
        QCoreApplication::installTranslator(wording);
    }
}

std::unique_ptr<QQuickWindow> UiEngine::mainWindow(SordinEngine& engine) {
    return window("MainWindow", engine);
}

std::unique_ptr<QQuickWindow> UiEngine::panel(SordinEngine& engine) {
    return window("MenuBarPanel", engine);
}

std::unique_ptr<QQuickWindow> UiEngine::window(const char* view, SordinEngine& engine) {
    QQmlComponent component(&qml_,
                            QUrl(QStringLiteral("qrc:/qt/qml/Sordin/%1.qml").arg(QLatin1String(view))));
    if (!component.isReady()) {
        throw std::runtime_error("cannot create the window: " + component.errorString().toStdString());
    }
    std::unique_ptr<QObject> object(
        component.createWithInitialProperties({{QStringLiteral("engine"), QVariant::fromValue(&engine)}}));
    if (qobject_cast<QQuickWindow*>(object.get()) == nullptr) {
        throw std::runtime_error("cannot create the window: " + component.errorString().toStdString());
    }
    QQmlEngine::setObjectOwnership(object.get(), QQmlEngine::CppOwnership);
    return std::unique_ptr<QQuickWindow>(static_cast<QQuickWindow*>(object.release()));
}

}  // namespace sordin
