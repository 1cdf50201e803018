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

namespace {

int runConsoleOnly(int argc, char *argv[])
{
    QCoreApplication app(argc, argv);
    QCoreApplication::setApplicationName("Selvane");
    QCoreApplication::setApplicationVersion(SELVANE_VERSION_STRING);
    QCommandLineParser parser;
    selvane::configureCommandLine(parser);
    parser.process(app); // prints help, version or the error and exits
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
    if (qEnvironmentVariableIsEmpty("DISPLAY") && qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY") &&
        qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
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
    if (selvane::probeRunningInstance(serverName, selvane::kInstanceProbeTimeoutMs))
        return 0; // the connection itself woke the running instance

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
    QStringList arguments;
    for (int i = 0; i < argc; ++i)
        arguments << QString::fromLocal8Bit(argv[i]);
    switch (selvane::launchFaceFor(arguments)) {
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
