// Display and window capture against a real X server: a red window of known size and place on
// an Xvfb screen is listed, captured alone, captured as part of the display, resized and
// closed during a capture; a display capture takes its sound from a PulseAudio monitor
// remapped as a microphone; bad capture addresses and a session without a display fail with
// their reasons (exit code 4: a source never opened) while the show goes on. The source dialog
// lists the window, shows a picture of it and writes its address.

#include "TestSupport.h"
#include "engine/CaptureSources.h"
#include "engine/Engine.h"
#include "panels/SourceDialog.h"

#include <QApplication>
#include <QComboBox>
#include <QImage>
#include <QLabel>
#include <QPushButton>
#include <QRadioButton>
#include <QtTest>
#include <cmath>

using namespace selvane;
using namespace testsupport;

namespace {

const QString kBinary = testsupport::builtProgram("SELVANE_BINARY");
const QString kTitle = QStringLiteral("Selvane Red Card");

// One picture of a recording, `at` seconds in.
QImage frameAt(const QString &file, double at, const QString &png)
{
    QFile::remove(png);
    if (!runFfmpeg({"-ss", QString::number(at), "-i", file, "-frames:v", "1", png}))
        return {};
    return QImage(png);
}

bool isRed(const QColor &c)
{
    return c.red() > 200 && c.green() < 60 && c.blue() < 60;
}

bool isBlack(const QColor &c)
{
    return c.red() < 40 && c.green() < 40 && c.blue() < 40;
}

} // namespace

class TestCapture : public QObject
{
    Q_OBJECT

    QTemporaryDir m_dir;
    QProcess m_server;
    QProcess m_window;
    QString m_display;

    QString path(const QString &name) const { return QDir(m_dir.path()).filePath(name); }

    // The red 320x240 window at 100,80; its handle once the server lists it.
    quint64 openWindow()
    {
        m_window.kill();
        m_window.waitForFinished(3000);
        m_window.start("ffplay", {"-v", "error", "-an", "-f", "lavfi", "-i",
                                  "color=c=red:size=320x240:rate=30", "-window_title", kTitle,
                                  "-left", "100", "-top", "80"});
        if (!m_window.waitForStarted(5000))
            return 0;
        QDeadlineTimer deadline(15000);
        while (!deadline.hasExpired()) {
            for (const CaptureTarget &target : CaptureSources::windows())
                if (target.name == kTitle)
                    return target.window;
            QTest::qWait(100);
        }
        return 0;
    }

    ProcessResult record(const QString &address, double seconds, const QString &file,
                         bool withDisplay = true)
    {
        IsolatedHome home;
        QProcessEnvironment env = home.environment();
        if (withDisplay)
            env.insert("DISPLAY", m_display);
        else
            env.remove("DISPLAY");
        return runProcess(kBinary,
                          {"--headless", "--channel", "1=" + address, "--duration",
                           QString::number(seconds), "--record", file},
                          env, 60000);
    }

private slots:
    void initTestCase()
    {
        QVERIFY(m_dir.isValid());
        const QString xvfb = QStandardPaths::findExecutable("Xvfb");
        QVERIFY2(!xvfb.isEmpty(), "Xvfb is needed (scripts/install-deps.sh installs it)");
        int display = 0;
        for (int n = 400 + int(QCoreApplication::applicationPid() % 300); n < 1000; ++n)
            if (!QFile::exists(QString("/tmp/.X11-unix/X%1").arg(n)) &&
                !QFile::exists(QString("/tmp/.X%1-lock").arg(n))) {
                display = n;
                break;
            }
        m_display = QString(":%1").arg(display);
        // -noreset: the server must not restart whenever its last client leaves.
        m_server.start(xvfb,
                       {m_display, "-screen", "0", "1280x720x24", "-nolisten", "tcp", "-noreset"});
        QVERIFY(m_server.waitForStarted(5000));
        QTRY_VERIFY_WITH_TIMEOUT(QFile::exists(QString("/tmp/.X11-unix/X%1").arg(display)), 10000);
        qputenv("DISPLAY", m_display.toLatin1());
        m_window.setProcessEnvironment([this] {
            QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
            env.insert("DISPLAY", m_display);
            env.insert("SDL_AUDIODRIVER", "dummy");
            return env;
        }());
    }

    void cleanupTestCase()
    {
        m_window.kill();
        m_window.waitForFinished(3000);
        m_server.terminate();
        m_server.waitForFinished(5000);
    }

    void windowAndDisplayAreListedAndCaptured()
    {
        const quint64 handle = openWindow();
        QVERIFY2(handle, "the test window never appeared in the window list");
        bool labelled = false;
        for (const CaptureTarget &target : CaptureSources::windows())
            labelled |= target.label == QString("%1  [0x%2]").arg(kTitle).arg(handle, 0, 16);
        QVERIFY(labelled);
        const QList<CaptureTarget> displays = CaptureSources::displays();
        QCOMPARE(displays.size(), 1);
        QCOMPARE(displays[0].geometry, QRect(0, 0, 1280, 720));

        // The window alone, at its own size.
        const QString windowFile = path("window.mp4");
        ProcessResult r =
            record(QString("wgc://capture?hwnd=0x%1").arg(handle, 0, 16), 2.5, windowFile);
        QVERIFY2(r.exitCode == 0, (r.out + r.err).right(2000).constData());
        QImage picture = frameAt(windowFile, 1.5, path("window.png"));
        QCOMPARE(picture.size(), QSize(320, 240));
        QVERIFY(isRed(picture.pixelColor(20, 20)) && isRed(picture.pixelColor(300, 220)));

        // The whole display: the window at its place on black.
        const QString displayFile = path("display.mp4");
        r = record("desktop://capture?monitor=0&cursor=0", 2.5, displayFile);
        QVERIFY2(r.exitCode == 0, (r.out + r.err).right(2000).constData());
        picture = frameAt(displayFile, 1.5, path("display.png"));
        QCOMPARE(picture.size(), QSize(1280, 720));
        QVERIFY(isRed(picture.pixelColor(110, 90)) && isRed(picture.pixelColor(410, 310)));
        QVERIFY(isBlack(picture.pixelColor(90, 70)) && isBlack(picture.pixelColor(430, 330)));
        QVERIFY(isBlack(picture.pixelColor(900, 500)));
    }

    void resizedAndClosedWindowDuringCapture()
    {
        const quint64 handle = openWindow();
        QVERIFY(handle);
        const QString file = path("closing.mp4");
        // While the capture runs: the window grows at 1.5 s and is closed at 3.5 s.
        QProcess driver;
        driver.setProcessEnvironment(m_window.processEnvironment());
        driver.start("sh", {"-c", QString("sleep 1.5; xdotool windowsize %1 480 360; sleep 2; "
                                          "kill %2")
                                      .arg(handle)
                                      .arg(m_window.processId())});
        QVERIFY(driver.waitForStarted(5000));
        const ProcessResult r =
            record(QString("wgc://capture?hwnd=0x%1").arg(handle, 0, 16), 5.5, file);
        driver.waitForFinished(5000);
        const QByteArray log = r.out + r.err;
        QVERIFY2(r.exitCode == 0, log.right(3000).constData());
        QVERIFY2(log.contains("captured window now 480x360"), log.right(3000).constData());
        QVERIFY2(log.contains("the captured window was closed"), log.right(3000).constData());
        // The program kept going after its source was gone.
        const ProbedFile probed = probeFile(file);
        QVERIFY2(probed.ok, probed.errors.constData());
        QVERIFY(probed.stream("h264"));
        QVERIFY2(probed.stream("h264")->frames >= 135, // well past the close at 3.5 s
                 qPrintable(QString::number(probed.stream("h264")->frames)));
    }

    void badCaptureAddressesSayWhy()
    {
        const struct
        {
            QString address;
            bool display;
            const char *reason;
        } cases[] = {
            {"wgc://capture?hwnd=zz", true, "needs a valid hwnd"},
            {"wgc://capture?hwnd=0x1ffffe", true, "needs a valid hwnd"}, // no such window
            {"desktop://capture?monitor=3", true, "invalid monitor index"},
            {"desktop://capture?monitor=0", false, "no X11 display"},
        };
        int n = 0;
        for (const auto &c : cases) {
            const ProcessResult r =
                record(c.address, 1.5, path(QString("bad%1.mp4").arg(++n)), c.display);
            const QByteArray log = r.out + r.err;
            QVERIFY2(r.exitCode == 4, (c.address.toUtf8() + "\n" + log.right(1500)).constData());
            QVERIFY2(log.contains(c.reason), (c.address.toUtf8() + "\n" + log).constData());
        }
    }

    void remappedMonitorIsAChannelsMicrophone()
    {
        // A 440 Hz tone plays into a null sink; its monitor, remapped as a source, is the
        // microphone of a display capture. The preview plays on a second sink, so that nothing
        // loops back into the microphone.
        PulseServer pulse;
        QVERIFY2(pulse.start("show"), pulse.log().constData());
        const auto pactl = [&](const QStringList &args) {
            QProcess p;
            p.setProcessEnvironment(pulse.environment());
            p.start("pactl", args);
            return p.waitForFinished(5000) && p.exitCode() == 0;
        };
        QVERIFY(pactl({"load-module", "module-remap-source", "master=show.monitor",
                       "source_name=showmic", "source_properties=device.description=ShowMic"}));
        QVERIFY(pactl({"load-module", "module-null-sink", "sink_name=speakers"}));
        QVERIFY(pactl({"set-default-sink", "speakers"}));
        QProcess tone;
        tone.setProcessEnvironment(pulse.environment());
        tone.start("ffmpeg", {"-v", "error", "-re", "-f", "lavfi", "-i",
                              "sine=frequency=440:sample_rate=48000", "-t", "12", "-f", "pulse",
                              "-device", "show", "tone"});
        QVERIFY(tone.waitForStarted(5000));

        IsolatedHome home;
        QProcessEnvironment env = home.environment();
        env.insert("DISPLAY", m_display);
        env.insert("XDG_RUNTIME_DIR", pulse.environment().value("XDG_RUNTIME_DIR"));
        env.insert("HOME", pulse.environment().value("HOME"));
        const QString file = path("microphone.mp4");
        const ProcessResult r =
            runProcess(kBinary,
                       {"--headless", "--channel", "1=desktop://capture?monitor=0", "--microphone",
                        "1=ShowMic", "--record", file, "--duration", "5"},
                       env, 60000);
        tone.kill();
        tone.waitForFinished(3000);
        QVERIFY2(r.exitCode == 0, (r.out + r.err).right(2000).constData());
        std::vector<std::int16_t> samples;
        double start = 0;
        QVERIFY(decodeAudio(file, &samples, &start));
        // The last two seconds (the microphone has long been open): the tone's pitch.
        const std::size_t from = samples.size() > 96000 ? samples.size() - 96000 : 0;
        int crossings = 0;
        double sum = 0;
        for (std::size_t i = from + 1; i < samples.size(); ++i) {
            crossings += (samples[i - 1] < 0) != (samples[i] < 0);
            sum += double(samples[i]) * samples[i];
        }
        const double seconds = double(samples.size() - from) / 48000.0;
        const double hz = crossings / 2.0 / seconds;
        const double rms = std::sqrt(sum / double(samples.size() - from)) / 32768.0;
        qInfo("recorded sound: %.0f Hz, %.1f dBFS RMS", hz, 20 * std::log10(rms + 1e-9));
        // The microphone's tone and nothing else (a 10 % margin: the pitch read from zero
        // crossings rises where the sound has gaps, and it has some; see the mixer's drift
        // handling of wall-clock sound).
        QVERIFY2(std::abs(hz - 440) < 44, (r.out + r.err).right(3000).constData());
        QVERIFY(rms > 0.01);
    }

    void sourceDialogListsTheWindow()
    {
        const quint64 handle = openWindow();
        QVERIFY(handle);
        SourceDialog dialog(nullptr, 1);
        auto *window = dialog.findChild<QRadioButton *>();
        for (QRadioButton *button : dialog.findChildren<QRadioButton *>())
            if (button->accessibleName() == "Window")
                window = button;
        QTest::mouseClick(window, Qt::LeftButton);
        QComboBox *list = nullptr;
        for (QComboBox *box : dialog.findChildren<QComboBox *>())
            if (box->accessibleName() == "Window")
                list = box;
        QVERIFY(list);
        const QString address = QString("wgc://capture?hwnd=0x%1").arg(handle, 0, 16);
        const int row = list->findData(address);
        QVERIFY2(row >= 0, qPrintable(list->itemText(0)));
        list->setCurrentIndex(row);
        // The chosen window shows in the dialog: red.
        auto *preview = dialog.findChild<QLabel *>("capturePreview");
        QVERIFY(preview);
        QTRY_VERIFY_WITH_TIMEOUT(!preview->pixmap().isNull(), 5000);
        const QImage still = preview->pixmap().toImage();
        QVERIFY(isRed(still.pixelColor(still.width() / 2, still.height() / 2)));
        dialog.accept();
        QCOMPARE(dialog.choice().address, address);

        // Closed and refreshed: gone from the list.
        m_window.kill();
        m_window.waitForFinished(3000);
        QTRY_VERIFY_WITH_TIMEOUT(CaptureSources::windows().isEmpty(), 5000);
        for (QPushButton *button : dialog.findChildren<QPushButton *>())
            if (button->accessibleName() == "Refresh windows")
                QTest::mouseClick(button, Qt::LeftButton);
        QCOMPARE(list->findData(address), -1);
        QCOMPARE(list->count(), 1);
        QVERIFY(list->currentData().toString().isEmpty());

        // A session without X11 (Wayland alone): the dialog says so instead of listing nothing.
        const QByteArray display = qgetenv("DISPLAY");
        qunsetenv("DISPLAY");
        SourceDialog withoutX(nullptr, 2);
        withoutX.show();
        for (QRadioButton *button : withoutX.findChildren<QRadioButton *>())
            if (button->accessibleName() == "Display")
                QTest::mouseClick(button, Qt::LeftButton);
        auto *notice = withoutX.findChild<QLabel *>("captureNotice");
        const bool told = notice && notice->isVisible() && notice->text().contains("X11");
        qputenv("DISPLAY", display);
        QVERIFY(told);
    }
};

int main(int argc, char *argv[])
{
    QApplication app(argc, argv);
    TestCapture test;
    return QTest::qExec(&test, argc, argv);
}

#include "test_capture.moc"
