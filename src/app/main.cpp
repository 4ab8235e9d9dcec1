// SPDX-License-Identifier: MIT
// sordin: the application.
#include "app/application.h"
#include "app/desktop.h"
#include "app/options.h"
#include "app/remote_control.h"
#include "app/termination_signals.h"
#include "guard/guard_process.h"
#include "platform/linux/desktop/display.h"
#include "platform/linux/desktop/wayland_session.h"
#include "platform/linux/sandbox/network_filter.h"
#include "platform/linux/sandbox/private_memory.h"
#include "platform/linux/session/application_service.h"
#include "platform/linux/session/running_program.h"
#include "platform/linux/session/status_report.h"
#include "platform/linux/storage/pending_restore_lock.h"
#include "platform/linux/storage/user_folders.h"
#include "support/own_files.h"
#include "support/program_path.h"

#include <QDBusConnection>
#include <QGuiApplication>
#include <QLocale>
#include <QLoggingCategory>
#include <QSocketNotifier>
#include <clocale>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <exception>
#include <langinfo.h>
#include <memory>
#include <optional>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>
#include <utility>
#include <variant>

namespace {

using namespace sordin;

constexpr int failed = 1;
constexpr int misused = 2;

std::shared_ptr<VolumeGuard> startGuard(const std::filesystem::path& program) {
    const auto helper = findHelper(program, "sordin-volume-guard");
    if (!helper) {
        std::fprintf(stderr, "sordin: sordin-volume-guard is missing: after a crash during an ad, the volume "
                             "stays down until the next start\n");
        return nullptr;
    }
    return std::make_shared<GuardProcess>(*helper, configFolder());
}

/// The program works without these folders, but the user has to know why data is lost.
void sayWhatCannotBeKept() {
    for (const auto& [folder, what] :
         {std::pair(configFolder(), "settings"), {dataFolder(), "the history"}}) {
        if (const auto error = prepareFolder(folder)) {
            std::fprintf(stderr, "sordin: %s will not be saved: %s: %s\n", what, folder.c_str(),
                         error.message().c_str());
        }
    }
}

/// Qt warns at every start without a UTF-8 locale, which containers and services lack. Call this before Qt's
/// application object exists.
void ensureUtf8Locale() {
    if (std::setlocale(LC_ALL, "") != nullptr && std::strcmp(nl_langinfo(CODESET), "UTF-8") == 0) {
        return;
    }
    // Qt reads the user's formats only once; it must do so before the change.
    static_cast<void>(QLocale::system());
    qputenv("LC_ALL", "C.UTF-8");
}

/// Prints a single line, because nothing else shows that the program runs.
void printThatThereIsNoDisplay(bool onboardingComplete) {
    std::fprintf(stderr, "sordin: no display: running without icon and windows; press Ctrl+C to quit%s\n",
                 onboardingComplete ? ""
                                    : ". Sordin listens after the first-run guide is finished on a display");
}

/// Selects the windowing system for Qt in a Wayland session. Call this before Qt's application object exists.
void chooseWindows() {
    const auto session = waylandSession();
    if (session && !qEnvironmentVariableIsSet("QT_QPA_PLATFORM") &&
        prefersXwayland(*session, x11Monitors())) {
        qputenv("QT_QPA_PLATFORM", "xcb");
    } else if (!session || session->drawsTitleBars) {
        // Avoids the graphics driver, which would double the program's memory. No integration has this name,
        // so Qt warns and loads none. Qt needs an integration only to draw title bars.
        qputenv("QT_WAYLAND_CLIENT_BUFFER_INTEGRATION", "none");
    }
}

/// Creates Qt's application object, for windows if there is a display.
std::unique_ptr<QCoreApplication> makeQt(int& argc, char** argv, bool windows) {
    if (!windows) {
        return std::make_unique<QCoreApplication>(argc, argv);
    }
    chooseWindows();
    // Without this, Qt detects a screen reader only if that was started before the program. The cost is
    // negligible.
    qputenv("QT_LINUX_ACCESSIBILITY_ALWAYS_ON", "1");
    qputenv("QT_IM_MODULE", "none");  // the windows have no text input
    QLoggingCategory::setFilterRules(QStringLiteral("qt.qpa.wayland.warning=false"));
    auto qt = std::make_unique<QGuiApplication>(argc, argv);
    QGuiApplication::setApplicationDisplayName(QStringLiteral("Sordin"));
    QGuiApplication::setDesktopFileName(QLatin1String(ApplicationService::id));
    QGuiApplication::setQuitOnLastWindowClosed(false);
    UiEngine::prepare();
    return qt;
}

int callRunning(int argc, char** argv, const char* method) {
    const QCoreApplication qt(argc, argv);
    const auto problem = callRunningProgram(QDBusConnection::sessionBus(), QLatin1String(method));
    if (problem) {
        std::fprintf(stderr, "sordin: %s\n", qPrintable(*problem));
        return failed;
    }
    return 0;
}

bool print(const QByteArray& line) {
    return std::puts(line.constData()) >= 0 && std::fflush(stdout) == 0;
}

int reportStatus(int argc, char** argv, const StatusRequest& request) {
    const QCoreApplication qt(argc, argv);
    const auto format = request.json ? ReportFormat::json : ReportFormat::line;
    const auto bus = QDBusConnection::sessionBus();
    if (!request.follow || !bus.isConnected()) {
        const auto state = propertiesOfRunningProgram(bus);
        if (const auto* problem = std::get_if<QString>(&state)) {
            std::fprintf(stderr, "sordin: %s\n", qPrintable(*problem));
            return failed;
        }
        return print(statusReport(std::get<QVariantMap>(state), format)) ? 0 : failed;
    }
    // Detects that the panel that reads the pipe has ended.
    QSocketNotifier reader(STDOUT_FILENO, QSocketNotifier::Read);
    struct stat output {};
    reader.setEnabled(fstat(STDOUT_FILENO, &output) == 0 && S_ISFIFO(output.st_mode));
    const auto fail = [] { QCoreApplication::exit(failed); };
    QObject::connect(&reader, &QSocketNotifier::activated, &qt, fail);
    const StatusFollower follower(
        bus, format,
        [fail](const QByteArray& line) {
            if (!print(line)) {
                fail();
            }
        },
        fail);
    return QCoreApplication::exec();
}

int run(int argc, char** argv, const Options& options) {
    const DisplayState display = displayState();
    if (display == DisplayState::unreachable) {
        std::fprintf(stderr, "sordin: cannot open the display %s\n", std::getenv("DISPLAY"));
        return failed;
    }
    const bool windows = display == DisplayState::reachable;
    const auto qt = makeQt(argc, argv, windows);
    std::optional<Desktop> desktop;
    // Autostart uses --hidden, too, but without this variable.
    const bool startedByBus = options.hidden && qEnvironmentVariableIsSet("DBUS_STARTER_BUS_TYPE");
    ApplicationService service(
        QDBusConnection::sessionBus(),
        [&desktop](const QString& token) {
            if (desktop) {
                desktop->showMain(token);
            }
        },
        startedByBus);
    if (service.name() == ApplicationService::Name::taken) {
        if (options.hidden ? service.otherAnswers() : service.activateOther()) {
            return 0;
        }
        std::fprintf(stderr, "sordin: already running but not responding\n");
        return failed;
    }
    // The lock covers the user's other sessions, and sessions without a bus.
    const PendingRestoreLock lock(configFolder(), PendingRestoreLock::patienceAtStart);
    if (lock.state() == PendingRestoreLock::State::taken) {
        std::fprintf(stderr, "sordin: already running\n");
        return failed;
    }
    sayWhatCannotBeKept();
    const auto program = programPath(argv[0]);
    auto guard = startGuard(program);
    const TerminationSignals signals([] { QCoreApplication::exit(); });
    Application application(program, std::move(guard));
    const RemoteControl remote(application.engine(), service);
    if (windows) {
        desktop.emplace(application.engine(), program);
        if (!options.hidden || !application.engine().onboardingComplete()) {
            desktop->showMain();
        }
    }
    if (!windows) {
        printThatThereIsNoDisplay(application.engine().onboardingComplete());
    }
    const int status = QCoreApplication::exec();
    desktop.reset();  // must not outlive the engine
    return status;
}

}  // namespace

int main(int argc, char** argv) {
    const auto options = parseOptions({argv + 1, argv + argc});
    if (!options) {
        return misused;
    }
    if (options->answer) {
        std::fputs(options->answer, stdout);
        return 0;
    }
    // Installed before the first thread, so that it applies to all of them.
    if (const auto error = refuseNetwork()) {
        std::fprintf(stderr, "sordin: cannot install the network filter: %s\n", error.message().c_str());
    }
    static_cast<void>(keepOutOfDumps());
    std::signal(SIGPIPE, SIG_IGN);
    std::signal(SIGXFSZ, SIG_IGN);  // writes beyond the file size limit fail instead
    ensureUtf8Locale();
    try {
        if (options->request) {
            return callRunning(argc, argv, options->request);
        }
        if (options->status) {
            return reportStatus(argc, argv, *options->status);
        }
        return run(argc, argv, *options);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "sordin: %s\n", error.what());
        return failed;
    }
}
