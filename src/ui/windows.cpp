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

/// Whether windows say themselves where they are. On Wayland the compositor does.
bool windowsHavePlaces() {
    return QGuiApplication::platformName() == QLatin1String("xcb");
}

void use(const QString& token) {
    if (!token.isEmpty() && QGuiApplication::platformName().startsWith(QLatin1String("wayland"))) {
        qputenv("XDG_ACTIVATION_TOKEN", token.toUtf8());  // where Qt looks for it, and takes it from
    }
}

void bringToFront(QQuickWindow& window) {
    window.setWindowStates(window.windowStates() & ~Qt::WindowMinimized);
    window.show();
    window.raise();
    window.requestActivate();
}

/// The place of a click, by the screens as they are laid out; where none was told, the pointer's.
QPoint placeOf(QPoint click) {
    if (click.isNull()) {
        return QCursor::pos();
    }
    for (const QScreen* screen : QGuiApplication::screens()) {
        const QRect logical = screen->geometry();
        const double scale = screen->devicePixelRatio();
        const QRect pixels(logical.topLeft(), (QSizeF(logical.size()) * scale).toSize());
        if (pixels.contains(click)) {
            return logical.topLeft() + (QPointF(click - logical.topLeft()) / scale).toPoint();
        }
    }
    return click;
}

/// Gives it round corners where there is nobody to mix transparent ones.
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

/// At login there may never be a window, and this is as big as all the rest of the program.
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
        }
    }
    use(token);
    bringToFront(*main_);
    if (windowsHavePlaces()) {
        surroundings_.bringForward(static_cast<std::uint32_t>(main_->winId()));
    }
}

void Windows::tellOfIcon() {
    main_->setProperty("iconIsShown", surroundings_.iconIsShown());
}

void Windows::togglePanel(QPoint click, const QString& token) {
    // A click on the icon takes the focus from the panel first, which closes it, and is told only then.
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
    // Once it was active, it goes when it no longer is.
    connect(panel_.get(), &QWindow::activeChanged, this, [this] {
        if (panel_ && !panel_->isActive()) {
            closePanel();
        }
    });
    if (windowsHavePlaces()) {
        // Its own master, so that no window manager puts it elsewhere or keeps the focus from it.
        panel_->setFlags(Qt::Popup | Qt::FramelessWindowHint | Qt::X11BypassWindowManagerHint);
        const QPoint place = placeOf(click);
        const QScreen* screen = QGuiApplication::screenAt(place);
        screen = screen != nullptr ? screen : QGuiApplication::primaryScreen();
        panel_->setPosition(panelPlace(place, panel_->size(), screen->availableGeometry()));
        if (!surroundings_.mixesWindows()) {
            cutCorners(*panel_);
        }
    } else {
        panel_->setFlags(Qt::Dialog | Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint);
    }
    bringToFront(*panel_);
}

void Windows::closePanel() {
    if (panel_) {
        panelWasClosed_.start();
        panel_->removeEventFilter(this);
        panel_->disconnect(this);
        panel_->hide();
        panel_.release()->deleteLater();  // it may be what is calling
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
            if (windowsHavePlaces() && panel_->isExposed()) {
                panel_->setMouseGrabEnabled(true);  // clicks elsewhere are to be told
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
    return QObject::eventFilter(object, event);
}

/// Of the main window. True if that was all there is to do.
bool Windows::closing(QEvent& event) {
    event.ignore();
    if (!surroundings_.iconIsShown()) {
        main_->showMinimized();
        return true;
    }
    mainSize_ = main_->size();
    main_->removeEventFilter(this);
    main_->hide();
    main_.release()->deleteLater();
    return true;
}

}  // namespace sordin
