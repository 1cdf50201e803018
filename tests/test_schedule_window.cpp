// The Program Schedule window driven as an operator drives it (offscreen): two base clips and a
// caption built in the clip dialogs, exported and checked by the real executable, imported
// back, and run by Start Schedule over a real recording whose picture switches where the rows
// say; refusals (a duplicate id, a garbage file, no base clip) in their boxes with the rows kept.
// Screenshots of the running window in both languages.

#include "GuiSupport.h"
#include "app/Language.h"
#include "engine/Engine.h"
#include "panels/ScheduleTimeline.h"
#include "panels/ScheduleWindow.h"

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QDateTimeEdit>
#include <QJsonObject>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>
#include <QSignalSpy>
#include <QTableView>
#include <QTimer>
#include <QUndoStack>
#include <QtTest>

using namespace testsupport;
using selvane::Engine;
using selvane::ScheduleWindow;

namespace {

const QString kRed =
    "lavfi://color=c=red:size=320x240:rate=30[out0];anullsrc=r=48000:cl=stereo[out1]";
const QString kBlue =
    "lavfi://color=c=blue:size=320x240:rate=30[out0];anullsrc=r=48000:cl=stereo[out1]";

// Closes the next "scheduleMessage" box with `answer`; "title|text" of what it said.
std::shared_ptr<QString> closeNextBox(QMessageBox::StandardButton answer = QMessageBox::Ok)
{
    auto said = std::make_shared<QString>();
    onNextDialog([said, answer](QDialog *dialog) {
        auto *box = qobject_cast<QMessageBox *>(dialog);
        if (!box || box->objectName() != "scheduleMessage")
            return;
        *said = box->windowTitle() + "|" + box->text();
        QTest::mouseClick(box->button(answer), Qt::LeftButton);
    });
    return said;
}

void typeInto(QLineEdit *edit, const QString &text)
{
    edit->selectAll();
    QTest::keyClicks(edit, text);
}

// Section by section, as the operator types over each selected part of the field.
void typeDateTime(QDateTimeEdit *edit, const QDateTime &when)
{
    const QStringList parts = when.toString("yyyy MM dd HH mm ss").split(' ');
    const QDateTimeEdit::Section sections[] = {
        QDateTimeEdit::YearSection, QDateTimeEdit::MonthSection,  QDateTimeEdit::DaySection,
        QDateTimeEdit::HourSection, QDateTimeEdit::MinuteSection, QDateTimeEdit::SecondSection};
    edit->setFocus();
    for (int i = 0; i < 6; ++i) {
        edit->setSelectedSection(sections[i]);
        QTest::keyClicks(edit, parts[i]);
    }
    QTest::keyClick(edit, Qt::Key_Tab);
}

} // namespace

class TestScheduleWindow : public QObject
{
    Q_OBJECT

    // Add -> the base clip dialog: id, source entry, start, end or "∞" -> OK.
    static void addBaseClip(ScheduleWindow &w, const QString &id, const QString &source,
                            const QDateTime &start, const QDateTime &end)
    {
        onNextDialog([=](QDialog *dialog) {
            typeInto(named<QLineEdit>(dialog, "Clip ID"), id);
            auto *sources = named<QComboBox>(dialog, "Source");
            sources->setCurrentIndex(sources->findText(source));
            typeDateTime(named<QDateTimeEdit>(dialog, "Start time"), start);
            if (end.isValid())
                typeDateTime(named<QDateTimeEdit>(dialog, "End time"), end);
            else
                QTest::mouseClick(named<QCheckBox>(dialog, "Open-ended"), Qt::LeftButton);
            QTest::mouseClick(named<QPushButton>(dialog, "OK"), Qt::LeftButton);
        });
        QTest::mouseClick(named<QPushButton>(&w, "Add Base Clip"), Qt::LeftButton);
    }

    static QString summary(ScheduleWindow &w) { return named<QLabel>(&w, "Clip count")->text(); }

private slots:
    void operatorBuildsExportsImportsAndRunsASchedule()
    {
        QTemporaryDir dir;
        Engine engine;
        engine.setChannelSource(0, kRed);
        engine.setChannelSource(1, kBlue);
        ScheduleWindow w(&engine);
        w.show();
        QVERIFY(QTest::qWaitForWindowExposed(&w));
        QCOMPARE(w.windowTitle(), QString("Program Schedule"));

        const QDateTime zero = w.origin();
        addBaseClip(w, "a", "Channel 1", zero, zero.addSecs(3));
        addBaseClip(w, "b", "Channel 2", zero.addSecs(3), {});
        onNextDialog([&](QDialog *dialog) {
            typeInto(named<QLineEdit>(dialog, "Clip ID"), "caption");
            typeInto(named<QLineEdit>(dialog, "Overlay text"), "ON AIR");
            typeDateTime(named<QDateTimeEdit>(dialog, "Start time"), zero.addSecs(1));
            QTest::mouseClick(named<QCheckBox>(dialog, "Open-ended"), Qt::LeftButton);
            QTest::mouseClick(named<QPushButton>(dialog, "OK"), Qt::LeftButton);
        });
        QTest::mouseClick(named<QPushButton>(&w, "Add Overlay Clip"), Qt::LeftButton);
        QCOMPARE(summary(w), QString("Base 2  |  Overlay 1"));
        const ProgramArrangement built = w.arrangement();
        QCOMPARE(built.sceneClips.size(), 2);
        QCOMPARE(built.sceneClips[0].endMs - built.sceneClips[0].startMs, 3000);
        QCOMPARE(built.sceneClips[1].startMs, 3000);
        QCOMPARE(built.sceneClips[1].channel, 1);
        QCOMPARE(built.overlayClips.value(0).textData.text, QString("ON AIR"));

        // Check passes; the exported file passes the executable's own check.
        auto said = closeNextBox();
        QTest::mouseClick(named<QPushButton>(&w, "Check"), Qt::LeftButton);
        QVERIFY2(said->startsWith("Schedule Check|Schedule check passed: 2 base clip(s), 1 "),
                 qPrintable(*said));
        const QString file = dir.filePath("show.json");
        QVERIFY(w.exportTo(file));
        IsolatedHome home;
        const ProcessResult checked = runProcess(testsupport::builtProgram("SELVANE_BINARY"),
                                                 {"--check-schedule", file}, home.environment());
        QVERIFY2(checked.exitCode == 0, checked.err.constData());

        // Cleared overlays come back with the file, exactly as they were.
        said = closeNextBox(QMessageBox::Yes);
        QTest::mouseClick(named<QPushButton>(&w, "Clear Overlay Clips"), Qt::LeftButton);
        QCOMPARE(*said, QString("Clear Overlay Clips|Delete all overlay clips?"));
        QCOMPARE(summary(w), QString("Base 2  |  Overlay 0"));
        QVERIFY(w.importFrom(file));
        QCOMPARE(w.arrangement(), built);
        // What the editor does not show (the outputs' stretches, failover) is written back as
        // it came, and gone with a file without it.
        ProgramArrangement extras = built;
        extras.outputs = {{3000, 9000}, {12000, 0}};
        extras.failover = QJsonObject{{"failoverMs", 1500}};
        const QString extrasFile = QDir(dir.path()).filePath("extras.json");
        QFile out(extrasFile);
        QVERIFY(out.open(QIODevice::WriteOnly));
        out.write(arrangement::toJson(extras));
        out.close();
        QVERIFY(w.importFrom(extrasFile));
        QCOMPARE(w.arrangement(), extras);
        QVERIFY(w.importFrom(file));
        QCOMPARE(w.arrangement(), built);

        // Every edit is one step back and forth: by key, by button, from the stack the Edit menu
        // shows; the origin's edits too.
        w.activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(&w));
        named<QTableView>(&w, "Base clips")->selectRow(0);
        QTest::mouseClick(named<QPushButton>(&w, "Move Base Clip Down"), Qt::LeftButton);
        QCOMPARE(w.arrangement().sceneClips[0].id, QString("b"));
        QTest::mouseClick(named<QPushButton>(&w, "Remove Base Clip"), Qt::LeftButton);
        QCOMPARE(summary(w), QString("Base 1  |  Overlay 1"));
        QCOMPARE(w.arrangement().sceneClips[0].id, QString("b"));
        QTest::keyClick(&w, Qt::Key_Z, Qt::ControlModifier);
        QCOMPARE(summary(w), QString("Base 2  |  Overlay 1"));
        QTest::mouseClick(named<QPushButton>(&w, "Undo Schedule Edit"), Qt::LeftButton);
        QCOMPARE(w.arrangement(), built);
        QTest::keyClick(&w, Qt::Key_Z, Qt::ControlModifier | Qt::ShiftModifier);
        QCOMPARE(w.arrangement().sceneClips[0].id, QString("b"));
        QCOMPARE(w.undoStack()->undoText(), QString("Move Base Clip Down"));
        w.undoStack()->undo();
        w.setOrigin(zero.addSecs(60));
        w.setOrigin(zero.addSecs(120));
        QCOMPARE(w.arrangement().sceneClips[0].startMs, -120000);
        QTest::keyClick(&w, Qt::Key_Z, Qt::ControlModifier);
        QCOMPARE(w.origin(), zero);
        QCOMPARE(w.arrangement(), built);

        // Start while recording: red for three seconds, then blue for good.
        selvane::OutputSettings settings;
        settings.encoder.fileEnabled = true;
        settings.encoder.filePath = dir.filePath("show.mp4");
        settings.encoder.qualityPreset = EncoderSettings::Performance;
        QSignalSpy started(&engine, &Engine::outputsStarted);
        QCOMPARE(engine.startOutputs(settings), selvane::Problem());
        QVERIFY(started.wait(10000));
        QTest::mouseClick(named<QPushButton>(&w, "Start Schedule"), Qt::LeftButton);
        auto *state = named<QLabel>(&w, "Schedule state");
        QCOMPARE(state->text(), QString("RUNNING"));
        QVERIFY(named<QPushButton>(&w, "Stop Schedule"));
        QTest::qWait(4000);
        QVERIFY(w.timeline()->playhead() > 3000);
        QDir().mkpath("screenshots");
        QVERIFY(w.grab().save("screenshots/schedule_en.png"));
        QVERIFY(selvane::installUiTranslator(true));
        QTRY_COMPARE(state->text(),
                     QCoreApplication::translate("selvane::ScheduleWindow", "RUNNING"));
        QVERIFY(w.grab().save("screenshots/schedule_zh.png"));
        selvane::installUiTranslator(false);
        QTRY_COMPARE(state->text(), QString("RUNNING"));
        QTest::qWait(1000);

        QTest::mouseClick(named<QPushButton>(&w, "Stop Schedule"), Qt::LeftButton);
        QCOMPARE(state->text(), QString("READY"));
        QCOMPARE(w.timeline()->playhead(), -1);
        QSignalSpy stopped(&engine, &Engine::outputsStopped);
        engine.stopOutputs();
        QVERIFY(stopped.wait(15000));
        const QColor early = averageColour(settings.encoder.filePath, 1.0);
        const QColor late = averageColour(settings.encoder.filePath, -0.5);
        QVERIFY2(early.red() > 180 && early.blue() < 70, qPrintable(early.name()));
        QVERIFY2(late.blue() > 160 && late.red() < 90, qPrintable(late.name()));
    }

    void refusalsShowTheirBoxesAndKeepTheRows()
    {
        QTemporaryDir dir;
        Engine engine;
        ScheduleWindow w(&engine);
        w.show();
        QVERIFY(QTest::qWaitForWindowExposed(&w));
        const QDateTime zero = w.origin();
        addBaseClip(w, "x", "Channel 1", zero, zero.addSecs(5));
        addBaseClip(w, "x", "Channel 3", zero.addSecs(5), {});
        const ProgramArrangement rows = w.arrangement();

        auto said = closeNextBox();
        QTest::mouseClick(named<QPushButton>(&w, "Check"), Qt::LeftButton);
        QCOMPARE(*said, QString("Invalid Schedule|Duplicate base clip ID: x"));
        said = closeNextBox();
        QTest::mouseClick(named<QPushButton>(&w, "Start Schedule"), Qt::LeftButton);
        QCOMPARE(*said, QString("Invalid Schedule|Duplicate base clip ID: x"));
        QVERIFY(!engine.isScheduleRunning());
        said = closeNextBox();
        QVERIFY(!w.exportTo(dir.filePath("refused.json")));
        QVERIFY(!QFile::exists(dir.filePath("refused.json")));

        // Files that are not schedules, or not there: the rows stay.
        const QString garbage = dir.filePath("garbage.json");
        QFile out(garbage);
        QVERIFY(out.open(QIODevice::WriteOnly) && out.write("{\"sceneClips\": [") > 0);
        out.close();
        said = closeNextBox();
        QVERIFY(!w.importFrom(garbage));
        QVERIFY2(said->startsWith("Import|") && said->size() > 8, qPrintable(*said));
        said = closeNextBox();
        QVERIFY(!w.importFrom(dir.filePath("absent.json")));
        QCOMPARE(*said, QString("Import|Unable to open the file."));
        QCOMPARE(w.arrangement(), rows);

        // Declined, then confirmed: with no base clip left, nothing can start.
        said = closeNextBox(QMessageBox::No);
        QTest::mouseClick(named<QPushButton>(&w, "Clear Base Clips"), Qt::LeftButton);
        QCOMPARE(*said, QString("Clear Base Clips|Delete all base clips?"));
        QCOMPARE(summary(w), QString("Base 2  |  Overlay 0"));
        said = closeNextBox(QMessageBox::Yes);
        QTest::mouseClick(named<QPushButton>(&w, "Clear Base Clips"), Qt::LeftButton);
        QCOMPARE(summary(w), QString("Base 0  |  Overlay 0"));
        said = closeNextBox();
        QTest::mouseClick(named<QPushButton>(&w, "Start Schedule"), Qt::LeftButton);
        QCOMPARE(*said, QString("Program Schedule|Add at least one valid base clip."));
        said = closeNextBox();
        QVERIFY(!w.exportTo(dir.filePath("empty.json")));
        QCOMPARE(*said, QString("Export|There are no valid clips to export. Check the validation "
                                "messages."));

        // A schedule started elsewhere shows as running, with its rows, here and in a new window.
        ProgramArrangement elsewhere = rows;
        elsewhere.sceneClips[1].id = "y";
        QVERIFY(engine.loadSchedule(elsewhere).ok);
        QVERIFY(engine.startSchedule());
        QCOMPARE(named<QLabel>(&w, "Schedule state")->text(), QString("RUNNING"));
        QCOMPARE(w.arrangement(), elsewhere);
        ScheduleWindow opened(&engine);
        opened.show();
        QCOMPARE(opened.arrangement(), elsewhere);
        QTest::mouseClick(named<QPushButton>(&opened, "Stop Schedule"), Qt::LeftButton);
        QVERIFY(!engine.isScheduleRunning());
        QCOMPARE(named<QLabel>(&w, "Schedule state")->text(), QString("READY"));
    }
};

SELVANE_GUI_TEST_MAIN(TestScheduleWindow)

#include "test_schedule_window.moc"
