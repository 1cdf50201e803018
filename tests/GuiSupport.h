#pragma once

// What the window tests share: finding a control as automation does (by its accessible name),
// answering the next modal dialog as an operator would, reading pictures back out of a
// recording, and a main() that gives the whole run a private home for settings and files.

#include "TestSupport.h"

#include <QApplication>
#include <QDialog>
#include <QElapsedTimer>
#include <QImage>
#include <QTimer>
#include <QtTest>
#include <memory>

namespace testsupport {

template <typename T> T *named(QWidget *root, const QString &name)
{
    for (T *widget : root->findChildren<T *>())
        if (widget->accessibleName() == name)
            return widget;
    return nullptr;
}

// Runs `act` on the next modal dialog of type T as soon as it is shown (the caller then opens
// it); gives up after ten seconds.
template <typename T = QDialog, typename Act> void onNextDialog(Act act)
{
    auto *poll = new QTimer;
    auto started = std::make_shared<QElapsedTimer>();
    started->start();
    QObject::connect(poll, &QTimer::timeout, [poll, act, started] {
        auto *dialog = qobject_cast<T *>(QApplication::activeModalWidget());
        if ((dialog && dialog->isVisible()) || started->elapsed() > 10000) {
            poll->stop();
            poll->deleteLater();
            if (dialog && dialog->isVisible())
                act(dialog);
        }
    });
    poll->start(20);
}

// The average colour of the recording's picture at `seconds` (negative: from the end).
inline QColor averageColour(const QString &file, double seconds)
{
    QProcess ffmpeg;
    ffmpeg.start("ffmpeg", {"-v", "error", seconds < 0 ? "-sseof" : "-ss", QString::number(seconds),
                            "-i", file, "-frames:v", "1", "-vf", "scale=1:1:flags=area", "-f",
                            "rawvideo", "-pix_fmt", "rgb24", "-"});
    ffmpeg.waitForFinished(30000);
    const QByteArray rgb = ffmpeg.readAllStandardOutput();
    return rgb.size() < 3 ? QColor() : QColor(uchar(rgb[0]), uchar(rgb[1]), uchar(rgb[2]));
}

// One picture of a recording, `seconds` in, through a PNG at `png`.
inline QImage frameAt(const QString &file, double seconds, const QString &png)
{
    QFile::remove(png);
    if (!runFfmpeg({"-ss", QString::number(seconds), "-i", file, "-frames:v", "1", png}))
        return {};
    return QImage(png);
}

// Settings, recordings and logs of the whole run live in a private home.
template <typename TestClass> int runGuiTest(int argc, char *argv[])
{
    static IsolatedHome home;
    qputenv("XDG_CONFIG_HOME", home.path("config").toUtf8());
    qputenv("XDG_DATA_HOME", home.path("data").toUtf8());
    qputenv("XDG_RUNTIME_DIR", home.path("run").toUtf8());
    qputenv("HOME", home.path().toUtf8());
    QApplication app(argc, argv);
    QCoreApplication::setApplicationName("Selvane");
    TestClass test;
    return QTest::qExec(&test, argc, argv);
}

} // namespace testsupport

#define SELVANE_GUI_TEST_MAIN(TestClass)                                                           \
    int main(int argc, char *argv[])                                                               \
    {                                                                                              \
        return testsupport::runGuiTest<TestClass>(argc, argv);                                     \
    }
