// SPDX-License-Identifier: MIT
#include "ui/windows.h"

#include "ui/panel_place.h"

#include <QCloseEvent>
#include <QCursor>
#include <QGuiApplication>
#include <QLoggingCategory>
#include <QMouseEvent>
#include <QPainterPath>
#include <QRegion>
#include <QScreen>
#include <utility>

namespace sordin {

namespace {

Q_LOGGING_CATEGORY(windowsLog, "sordin.windows", QtWarningMsg)

/// Whether windows can choose their places. On Wayland, the compositor chooses.
bool isX11() {
    return QGuiApplication::platformName() == QLatin1String("xcb");
}

bool isWayland() {
    return QGuiApplication::platformName().startsWith(QLatin1String("wayland"));
}

void bringToFront(QQuickWindow& window) {
    window.setWindowStates(window.windowStates() & ~Qt::WindowMinimized);
    window.show();
    window.raise();
    window.requestActivate();
}

/// Converts physical pixels of the screens to window coordinates.
QPoint toLogical(QPoint pixel) {
    for (const QScreen* screen : QGuiApplication::screens()) {
        const QRect logical = screen->geometry();
        const double scale = screen->devicePixelRatio();
        const QRect pixels(logical.topLeft(), (QSizeF(logical.size()) * scale).toSize());
        if (pixels.contains(pixel)) {
            return logical.topLeft() + (QPointF(pixel - logical.topLeft()) / scale).toPoint();
        }
    }
    return pixel;
}

const QScreen& screenAt(QPoint place) {
    const QScreen* screen = QGuiApplication::screenAt(place);
    return screen != nullptr ? *screen : *QGuiApplication::primaryScreen();
}

/// Rounds the corners of a window with a mask, because transparent corners would be black.
void cutCorners(QWindow& window) {
    constexpr double radius = 12;
    QPainterPath path;
    path.addRoundedRect(QRectF({0, 0}, QSizeF(window.size())), radius, radius);
    window.setMask(QRegion(path.toFillPolygon().toPolygon()));
}

}  // namespace

Windows::Windows(SordinEngine& engine, Surroundings surroundings)
    : engine_(engine), surroundings_(std::move(surroundings)) {}

Windows::~Windows() = default;

/// Created with the first window: at login there may never be one, and the UI takes as much memory as the
/// rest of the program.
UiEngine& Windows::ui() {
    return ui_ ? *ui_ : ui_.emplace();
}

void Windows::showMain(const QString& token) {
    closePanel();
    if (!main_) {
        main_ = ui().mainWindow(engine_);
        main_->installEventFilter(this);
        connect(main_.get(), SIGNAL(quit()), this, SIGNAL(quit()));
        connect(main_.get(), SIGNAL(guideTurned()), this, SLOT(tellOfIcon()));
        connect(
            main_.get(), &QQuickWindow::frameSwapped, this, [] { qCInfo(windowsLog, "the window is drawn"); },
            Qt::SingleShotConnection);
        if (mainSize_.isValid()) {
            main_->resize(mainSize_);
            main_->setProperty("sidebarWidth", sidebarWidth_);
        }
    }
    use(token);
    bringToFront(*main_);
    if (isX11()) {
        surroundings_.bringForward(static_cast<std::uint32_t>(main_->winId()));
    }
}

void Windows::tellOfIcon() {
    main_->setProperty("iconIsShown", surroundings_.iconIsShown());
}

/// Passes the activation token of the user's action to the desktop.
void Windows::use(const QString& token) {
    if (token.isEmpty()) {
        return;
    }
    if (isX11()) {
        surroundings_.endStartupNotification(token);
    } else if (isWayland()) {
        qputenv("XDG_ACTIVATION_TOKEN", token.toUtf8());  // Qt uses it for the next window and removes it
    }
}

void Windows::togglePanel(QPoint click, const QString& token) {
    // If the panel is open, a click on the icon first takes the focus, which closes the panel, and reports
    // the click later.
    constexpr int oneClick = 300;  // milliseconds
    const bool justClosed = panelWasClosed_.isValid() && panelWasClosed_.elapsed() < oneClick;
    if (panel_) {
        closePanel();
    } else if (!justClosed) {
        use(token);
        openPanel(click);
    }
}

void Windows::openPanel(QPoint click) {
    panel_ = ui().panel(engine_);
    panel_->installEventFilter(this);
    connect(panel_.get(), SIGNAL(quit()), this, SIGNAL(quit()));
    connect(panel_.get(), SIGNAL(openMain()), this, SLOT(showMain()));
    // Closes the panel when it loses the focus that it had.
    connect(panel_.get(), &QWindow::activeChanged, this, [this] {
        if (panel_ && !panel_->isActive()) {
            closePanel();
        } else if (panel_ && isWayland()) {
            surroundings_.moveFocusedToPointer();
        }
    });
    if (!isX11()) {
        panel_->setFlags(Qt::Dialog | Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint);
        bringToFront(*panel_);
        return;
    }
    if (surroundings_.isXwayland) {
        // A pointer grab does not receive clicks on other programs' windows, and compositors give keyboard
        // focus only to managed windows.
        panel_->setFlags(Qt::Tool | Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint);
        surroundings_.hideFromTaskBar(static_cast<std::uint32_t>(panel_->winId()));
        if (surroundings_.desktopTakesNoFocus) {
            catchClicks();
        }
    } else {
        // Not managed, so that the window manager neither moves it nor withholds the focus.
        panel_->setFlags(Qt::Popup | Qt::FramelessWindowHint | Qt::X11BypassWindowManagerHint);
    }
    placePanel(click);
    bringToFront(*panel_);
    if (surroundings_.isXwayland) {
        surroundings_.bringForward(static_cast<std::uint32_t>(panel_->winId()));
    }
}

void Windows::placePanel(QPoint click) {
    std::optional<QPoint> pointer;
    if (!surroundings_.isXwayland) {  // Xwayland knows the pointer only over its own windows
        pointer = QCursor::pos();
    }
    const QPoint told = click.isNull() ? click : toLogical(click);
    const QScreen& likely = screenAt(pointer.value_or(told));
    const QPoint icon = iconPlace(told, pointer, likely.geometry(), likely.availableGeometry());
    panel_->setPosition(panelPlace(icon, panel_->size(), screenAt(icon).availableGeometry()));
    if (!surroundings_.mixesWindows()) {
        cutCorners(*panel_);
    }
}

/// Covers the desktop with invisible windows below the panel.
void Windows::catchClicks() {
    for (QScreen* screen : QGuiApplication::screens()) {
        auto catcher = std::make_unique<QWindow>(screen);
        catcher->setFlags(Qt::Tool | Qt::FramelessWindowHint | Qt::WindowDoesNotAcceptFocus |
                          Qt::WindowStaysOnTopHint);
        QSurfaceFormat format = catcher->requestedFormat();
        format.setAlphaBufferSize(8);
        catcher->setFormat(format);
        catcher->setGeometry(screen->availableGeometry());
        catcher->installEventFilter(this);
        const auto window = static_cast<std::uint32_t>(catcher->winId());
        surroundings_.hideFromTaskBar(window);
        surroundings_.makeTransparent(window);
        catcher->show();
        clickCatchers_.push_back(std::move(catcher));
    }
    panel_->setTransientParent(clickCatchers_.front().get());
}

void Windows::closePanel() {
    if (panel_) {
        panelWasClosed_.start();
        panel_->removeEventFilter(this);
        panel_->disconnect(this);
        panel_->hide();
        panel_.release()->deleteLater();  // not deleted here, because it may be the caller
        for (auto& catcher : clickCatchers_) {
            catcher->removeEventFilter(this);
            catcher->hide();
            catcher.release()->deleteLater();
        }
        clickCatchers_.clear();
    }
}

bool Windows::eventFilter(QObject* object, QEvent* event) {
    if (object == main_.get() && event->type() == QEvent::Close) {
        return closing(*event);
    }
    if (object == panel_.get()) {
        switch (event->type()) {
        case QEvent::Close:
            closePanel();
            return true;
        case QEvent::Expose:
            if (isX11() && !surroundings_.isXwayland && panel_->isExposed()) {
                panel_->setMouseGrabEnabled(true);  // to receive clicks outside the panel
            }
            break;
        case QEvent::MouseButtonPress:
            if (!QRectF({0, 0}, QSizeF(panel_->size()))
                     .contains(static_cast<QMouseEvent*>(event)->position())) {
                closePanel();
                return true;
            }
            break;
        default:
            break;
        }
    }
    if (event->type() == QEvent::MouseButtonPress && !clickCatchers_.empty()) {
        closePanel();
        return true;
    }
    return QObject::eventFilter(object, event);
}

/// Handles the close event of the main window; always returns true.
bool Windows::closing(QEvent& event) {
    event.ignore();
    if (!surroundings_.iconIsShown()) {
        main_->showMinimized();
        return true;
    }
    mainSize_ = main_->size();
    sidebarWidth_ = main_->property("sidebarWidth");
    main_->removeEventFilter(this);
    main_->hide();
    main_.release()->deleteLater();
    return true;
}

}  // namespace sordin
