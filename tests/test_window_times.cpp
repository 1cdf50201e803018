// The outputs' own times set in the window as an operator sets them: the start and stop chosen
// in the output settings, the countdown shown, and a recording that starts and stops by itself;
// a time that has passed is refused with a box and the times stay as they were.

#include "GuiSupport.h"
#include "app/MainWindow.h"
#include "engine/Engine.h"
#include "panels/OutputSettingsPanel.h"

#include <QComboBox>
#include <QDateTimeEdit>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>
#include <QSignalSpy>
#include <QtTest>

using namespace testsupport;
using selvane::Engine;

class TestWindowTimes : public QObject
{
    Q_OBJECT

    // Picks the last choice of a combo box ("At"), then sets the date-time and presses Enter.
    static void chooseTime(QWidget *root, const QString &which, const QDateTime &at)
    {
        auto *kind = named<QComboBox>(root, "Outputs " + which);
        QVERIFY(kind);
        kind->setFocus();
        QTest::keyClick(kind, Qt::Key_End);
        auto *edit = named<QDateTimeEdit>(root, "Outputs " + which + " Time");
        QVERIFY(edit && edit->isEnabled());
        // The calendar and the sections are the widget's own; what counts is the value the
        // operator confirms with Enter.
        edit->setFocus();
        edit->setDateTime(at);
        QTest::keyClick(edit, Qt::Key_Return);
    }

private slots:
    void recordingStartsAndStopsAtTheTimesChosen()
    {
        QTemporaryDir dir;
        const QString file = QDir(dir.path()).filePath("timed.mkv");
        MainWindow w;
        w.show();
        QVERIFY(QTest::qWaitForWindowExposed(&w));
        w.engine()->setChannelSource(0, "lavfi://color=c=red:size=320x240:rate=30");
        w.engine()->cutTo(0);
        auto *recording = named<QLineEdit>(w.outputPanel(), "Recording file");
        QVERIFY(recording);
        recording->selectAll();
        QTest::keyClicks(recording, file);
        QTest::keyClick(recording, Qt::Key_Return);

        // A stop that has passed: refused with a box; the time shown before stays.
        onNextDialog<QMessageBox>([](QMessageBox *box) {
            QVERIFY2(box->text().contains("passed"), qPrintable(box->text()));
            box->accept();
        });
        chooseTime(w.outputPanel(), "Stop", QDateTime::currentDateTime().addSecs(-3600));
        QTRY_VERIFY(w.engine()->outputTimes().stop.at > QDateTime::currentDateTime());

        const QDateTime start = QDateTime::currentDateTime().addSecs(4);
        const QDateTime startAt(
            start.date(), QTime(start.time().hour(), start.time().minute(), start.time().second()));
        chooseTime(w.outputPanel(), "Start", startAt);
        chooseTime(w.outputPanel(), "Stop", startAt.addSecs(2));
        QCOMPARE(w.engine()->outputTimes().start.at, startAt);
        QCOMPARE(w.engine()->outputTimes().stop.at, startAt.addSecs(2));
        auto *countdown = named<QLabel>(w.outputPanel(), "Output Times Countdown");
        QTRY_VERIFY_WITH_TIMEOUT(countdown->text().contains("start in"), 3000);
        QDir shots(QDir::current().filePath("screenshots"));
        shots.mkpath(".");
        w.outputPanel()->grab().save(shots.filePath("output_times_en.png"));
        w.setLanguage(true);
        QTest::qWait(1200);
        w.outputPanel()->grab().save(shots.filePath("output_times_zh.png"));

        QSignalSpy stopped(w.engine(), &Engine::outputsStopped);
        QVERIFY(stopped.wait(15000));
        QVERIFY(QDateTime::currentDateTime() >= startAt.addSecs(2));
        const ProbedFile probed = probeFile(file);
        QVERIFY2(probed.ok && probed.stream("h264"), probed.errors.constData());
        QVERIFY2(std::abs(probed.stream("h264")->frames - 60) <= 1,
                 qPrintable(QString::number(probed.stream("h264")->frames)));
    }
};

SELVANE_GUI_TEST_MAIN(TestWindowTimes)

#include "test_window_times.moc"
