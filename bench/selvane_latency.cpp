// How long the window thread waits while a show runs: four test-signal channels, a cut every
// 2 s, a source change every 10 s, a text overlay and a recording. A 10 ms timer on the window
// thread measures its own lateness; the worst, the 99th percentile and the median are printed.
// With --window the main window is up (under whatever display there is), otherwise the engine
// runs alone. Never a test: it measures the machine as much as the program.
//
// Usage: selvane_latency [--window] [--seconds N] [--size WxH]

#include "app/MainWindow.h"
#include "engine/Engine.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QTemporaryDir>
#include <QTimer>
#include <algorithm>
#include <cstdio>
#include <memory>
#include <vector>

using namespace selvane;

int main(int argc, char *argv[])
{
    QApplication app(argc, argv);
    const QStringList args = QCoreApplication::arguments();
    const bool withWindow = args.contains("--window");
    int seconds = 60;
    QString size = "1280x720";
    for (int i = 1; i + 1 < args.size(); ++i) {
        if (args[i] == "--seconds")
            seconds = args[i + 1].toInt();
        if (args[i] == "--size")
            size = args[i + 1];
    }
    qputenv("XDG_DATA_HOME", QDir::tempPath().toUtf8() + "/selvane-latency");

    std::unique_ptr<MainWindow> window;
    std::unique_ptr<Engine> ownEngine;
    Engine *engine = nullptr;
    if (withWindow) {
        window = std::make_unique<MainWindow>();
        window->show();
        engine = window->engine();
    } else {
        ownEngine = std::make_unique<Engine>();
        engine = ownEngine.get();
        engine->startAudio();
    }
    const QStringList patterns{"testsrc2", "smptehdbars", "mandelbrot", "rgbtestsrc"};
    const auto address = [&](int channel, int variant) {
        return QStringLiteral("lavfi://%1=size=%2:rate=30[out0];sine=frequency=%3[out1]")
            .arg(patterns[(channel + variant) % patterns.size()], size)
            .arg(400 + 100 * channel);
    };
    for (int c = 0; c < kChannelCount; ++c)
        engine->setChannelSource(c, address(c, 0));
    TextOverlayData caption;
    caption.id = 1;
    caption.text = QStringLiteral("LATENCY RUN");
    caption.backgroundEnabled = caption.shadow = true;
    engine->setTextOverlay(caption);

    QTemporaryDir dir;
    OutputSettings output;
    output.encoder.fileEnabled = true;
    output.encoder.filePath = dir.filePath("latency.mp4");
    output.encoder.qualityPreset = EncoderSettings::Performance;
    engine->startOutputs(output);

    std::vector<double> latenessMs;
    latenessMs.reserve(std::size_t(seconds) * 100);
    QElapsedTimer sinceLast;
    QTimer probe;
    probe.setTimerType(Qt::PreciseTimer);
    QObject::connect(&probe, &QTimer::timeout, [&] {
        if (sinceLast.isValid())
            latenessMs.push_back(std::max(0.0, sinceLast.nsecsElapsed() / 1e6 - 10.0));
        sinceLast.start();
    });
    int tick = 0;
    QTimer cuts;
    QObject::connect(&cuts, &QTimer::timeout, [&] {
        ++tick;
        engine->cutTo(tick % kChannelCount);
        if (tick % 5 == 0) {
            const int channel = (tick / 5) % kChannelCount;
            engine->setChannelSource(channel, address(channel, tick));
        }
    });
    QTimer::singleShot(2000, [&] {
        probe.start(10);
        cuts.start(2000);
    });
    QTimer::singleShot((seconds + 2) * 1000, [&] {
        probe.stop();
        cuts.stop();
        engine->stopOutputs();
        QObject::connect(engine, &Engine::outputsStopped, &app, &QCoreApplication::quit);
        QTimer::singleShot(15000, &app, &QCoreApplication::quit);
    });
    app.exec();

    const EngineStats stats = engine->stats();
    std::sort(latenessMs.begin(), latenessMs.end());
    const auto at = [&](double q) {
        return latenessMs.empty() ? 0.0 : latenessMs[std::size_t(q * (latenessMs.size() - 1))];
    };
    const long over20 =
        std::count_if(latenessMs.begin(), latenessMs.end(), [](double ms) { return ms > 20.0; });
    std::printf("%s, %d s, 4 channels %s, a cut every 2 s: 10 ms timer lateness worst %.1f ms, "
                "p99 %.1f ms, median %.2f ms, %ld of %zu ticks over 20 ms; program frames %lld, "
                "encoder drops %lld\n",
                withWindow ? "with the window" : "engine alone", seconds, qPrintable(size),
                latenessMs.empty() ? 0.0 : latenessMs.back(), at(0.99), at(0.5), over20,
                latenessMs.size(), stats.program.frames, stats.output.encoderDrops);
    window.reset();
    ownEngine.reset();
    return 0;
}
