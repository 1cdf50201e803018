// Process entry of both faces. The GUI face follows a fixed start-up order: meta types, the
// application object and its identity, logging, the single-instance lock, the main window, the
// event loop, and teardown in reverse.

#include "Version.h"
#include "app/LogSink.h"
#include "app/MainWindow.h"
#include "app/SingleInstance.h"
#include "cli/CommandLine.h"
#include "cli/HeadlessRunner.h"
#include "control/WindowControl.h"
#include "media/Heap.h"
#include "show/InterruptSignals.h"

#include <QApplication>
#include <QCommandLineParser>
#include <QGuiApplication>
#include <QIcon>
#include <QImage>
#include <QLocalServer>
#include <QTimer>
#include <cstdio>
#include <memory>

#ifdef _WIN32
#include <windows.h>
#endif

namespace {

// selvane.exe is a console program, so that a command prompt waits for a show and sees what it
// writes. Started on its own (from the Start menu or Explorer) the window face lets go of the
// console Windows made just for it, which closes that console window.
void leaveOwnConsole()
{
#ifdef _WIN32
    DWORD processes[2] = {};
    if (GetConsoleProcessList(processes, 2) == 1)
        FreeConsole();
#endif
}

int runConsoleOnly(int argc, char *argv[])
{
    QCoreApplication app(argc, argv);
    QCoreApplication::setApplicationName("Selvane");
    QCoreApplication::setApplicationVersion(SELVANE_VERSION_STRING);
    QCommandLineParser parser;
    selvane::configureCommandLine(parser);
    // Printed here rather than by QCommandLineParser::process, which on Windows shows a message
    // box instead when the console is not one Windows made (under Wine, a script's pipes).
    if (!parser.parse(QCoreApplication::arguments())) {
        std::fprintf(stderr, "selvane: %s\n", qPrintable(parser.errorText()));
        return 1;
    }
    if (parser.isSet("version")) {
        std::printf("Selvane %s\n", SELVANE_VERSION_STRING);
        return 0;
    }
    if (parser.isSet("help") || parser.isSet("help-all")) {
        std::fputs(qPrintable(parser.helpText()), stdout);
        return 0;
    }
    if (!parser.positionalArguments().isEmpty()) {
        fprintf(stderr, "selvane: unexpected argument '%s'\n",
                qPrintable(parser.positionalArguments().first()));
        return 1;
    }
    return 0;
}

int runHeadless(int argc, char *argv[])
{
    // Fonts and painting need a GUI application; without a display it runs offscreen.
#ifdef _WIN32
    // Always offscreen on Windows, which a service or a locked session can run too; the
    // offscreen platform reads its fonts through FreeType, from the system's font folder.
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    if (qEnvironmentVariableIsEmpty("QT_QPA_FONTDIR") && !qEnvironmentVariableIsEmpty("SystemRoot"))
        qputenv("QT_QPA_FONTDIR", qgetenv("SystemRoot") + "\\Fonts");
#else
    if (qEnvironmentVariableIsEmpty("DISPLAY") && qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY") &&
        qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
#endif
    QGuiApplication app(argc, argv);
    QCoreApplication::setApplicationName("Selvane");
    QCoreApplication::setApplicationVersion(SELVANE_VERSION_STRING);
    QCommandLineParser parser;
    selvane::configureCommandLine(parser);
    parser.process(app);
    selvane::ShowOptions options;
    QString error;
    if (!selvane::readShowOptions(parser, &options, &error)) {
        std::fprintf(stderr, "selvane: %s\n", qPrintable(error));
        return 1;
    }
    selvane::pruneOversizedLogs(selvane::kStartupLogPruneBytes);
    selvane::initLogSink();
    selvane::InterruptSignals::setHardInterruptHook(selvane::waitForWriter);
    HeadlessRunner runner(options);
    return runner.run();
}

int runGui(int argc, char *argv[])
{

    auto app = std::make_unique<QApplication>(argc, argv);
    QCoreApplication::setApplicationName("Selvane");
    QCoreApplication::setApplicationVersion(SELVANE_VERSION_STRING);
    const QIcon icon(":/resources/images/logo.png");
    if (!icon.isNull())
        QApplication::setWindowIcon(icon);

    // The show options of the command line, checked before anything starts.
    QCommandLineParser parser;
    selvane::configureCommandLine(parser);
    parser.process(*app);
    selvane::ShowOptions show;
    QString optionError;
    if (!selvane::readShowOptions(parser, &show, &optionError)) {
        std::fprintf(stderr, "selvane: %s\n", qPrintable(optionError));
        return 1;
    }

    selvane::pruneOversizedLogs(selvane::kStartupLogPruneBytes);
    selvane::initLogSink();

    const QString serverName = selvane::singleInstanceServerName();
    if (selvane::probeRunningInstance(serverName, selvane::kInstanceProbeTimeoutMs)) {
        // The connection itself woke the running instance.
        qInfo().noquote() << "single instance: Selvane is running already; its window comes to "
                             "the front";
        return 0;
    }

    // A crashed instance may have left its socket behind; nobody answered the probe, so the
    // name is free to take.
    QLocalServer::removeServer(serverName);
    auto server = std::make_unique<QLocalServer>();
    server->setSocketOptions(QLocalServer::UserAccessOption);
    if (!server->listen(serverName)) {
        qCritical().noquote() << "Single-instance lock listen failed:" << server->errorString();
        return 1;
    }

    auto window = std::make_unique<MainWindow>();
    MainWindow *windowPtr = window.get();
    // The remote control, when the command line or the "control/port" setting asks for it.
    selvane::startWindowControl(*window->engine(), {show.controlPort, show.controlBind}, windowPtr);
    if (show.hasShow()) {
        QString error;
        if (!window->loadShow(show, show.startOutputs, &error)) {
            std::fprintf(stderr, "selvane: %s\n", qPrintable(error));
            return 1;
        }
    }
    // SIGTERM and Ctrl+C end the outputs cleanly (trailers written) before the window goes.
    selvane::InterruptSignals::setHardInterruptHook(selvane::waitForWriter);
    auto *interrupts = new selvane::InterruptSignals(window.get());
    QObject::connect(interrupts, &selvane::InterruptSignals::interrupted, windowPtr,
                     &MainWindow::closeForShutdown);
    // --duration ends an unattended show the same way, outputs first.
    if (show.durationSeconds > 0)
        QTimer::singleShot(qint64(show.durationSeconds * 1000), Qt::PreciseTimer, windowPtr,
                           &MainWindow::closeForShutdown);
    selvane::connectWakeUpHandler(server.get(), [windowPtr] {
        windowPtr->raise();
        windowPtr->activateWindow();
    });
    window->show();
    selvane::reassertFfmpegLogging();

    const int exitCode = QApplication::exec();

    window.reset();
    server.reset();
    app.reset();
    return exitCode;
}

} // namespace

int main(int argc, char *argv[])
{
    selvane::setUpHeap(); // before any thread has an arena
    QStringList arguments;
    for (int i = 0; i < argc; ++i)
        arguments << QString::fromLocal8Bit(argv[i]);
    const selvane::LaunchFace face = selvane::launchFaceFor(arguments);
    if (face == selvane::LaunchFace::Gui)
        leaveOwnConsole();
    switch (face) {
    case selvane::LaunchFace::ConsoleOnly:
        return runConsoleOnly(argc, argv);
    case selvane::LaunchFace::Headless:
        return runHeadless(argc, argv);
    case selvane::LaunchFace::CheckSchedule: {
        QCoreApplication app(argc, argv);
        QCommandLineParser parser;
        selvane::configureCommandLine(parser);
        parser.process(app);
        return selvane::checkScheduleFile(parser);
    }
    case selvane::LaunchFace::Gui:
        break;
    }
    return runGui(argc, argv);
}
