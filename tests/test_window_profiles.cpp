// Encode profiles set in the window as an operator sets them: a smaller profile added through
// its dialog, an HLS folder on that profile, channel 2 recorded on its own beside the program
// recording; the outputs run and what they wrote is read back with ffprobe and FFmpeg. A
// profile name that is bad or taken is refused in the dialog, a renamed profile stays the one
// its target takes, and a target naming a profile that was removed keeps the outputs from
// starting, with the engine's reason in a box. An adaptive encode stepped down stands out in
// the status.

#include "GuiSupport.h"
#include "app/MainWindow.h"
#include "engine/Engine.h"
#include "media/StoredSettings.h"
#include "panels/EncodeProfileDialog.h"
#include "panels/OutputSettingsPanel.h"
#include "panels/OutputStatusView.h"
#include "panels/StreamTargetDialog.h"

#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>
#include <QSignalSpy>
#include <QSpinBox>
#include <QTableView>
#include <QTableWidget>
#include <QtTest>

using namespace testsupport;
using selvane::EncodeProfileDialog;
using selvane::Engine;
using selvane::OutputStatusView;
using selvane::StreamTargetDialog;

namespace {

// The picture size of the first video stream, as ffprobe reads it.
QSize pictureSize(const QString &path)
{
    QProcess probe;
    probe.start("ffprobe", {"-v", "error", "-select_streams", "v:0", "-show_entries",
                            "stream=width,height", "-of", "csv=p=0:s=x", path});
    if (!probe.waitForFinished(30000) || probe.exitCode() != 0)
        return {};
    // A playlist lists its stream once more under its program: the first line tells.
    const QList<QByteArray> sides =
        probe.readAllStandardOutput().trimmed().split('\n').value(0).trimmed().split('x');
    return sides.size() == 2 ? QSize(sides[0].toInt(), sides[1].toInt()) : QSize();
}

// Types into a line edit or a spin box as an operator does: all of it selected, then keys.
void typeInto(QWidget *field, const QString &text)
{
    QVERIFY(field);
    field->setFocus();
    QTest::keyClick(field, Qt::Key_A, Qt::ControlModifier);
    QTest::keyClicks(field, text);
}

// Moves a combo box with the arrow keys until the choice whose data is `data` is current.
// Clicks a row of a table as the operator picks it.
void clickRow(QTableView *table, int row)
{
    QVERIFY(table && row >= 0);
    const QRect cell = table->visualRect(table->model()->index(row, 0));
    QTest::mouseClick(table->viewport(), Qt::LeftButton, {}, cell.center());
    QCOMPARE(table->currentIndex().row(), row);
}

void chooseByKeys(QComboBox *combo, const QString &data)
{
    QVERIFY(combo);
    combo->setFocus();
    QTest::keyClick(combo, Qt::Key_Home);
    for (int i = 0; i < combo->count() && combo->currentData().toString() != data; ++i)
        QTest::keyClick(combo, Qt::Key_Down);
    QCOMPARE(combo->currentData().toString(), data);
}

} // namespace

class TestWindowProfiles : public QObject
{
    Q_OBJECT

    // Opens the profile dialog with Add, types the name and size, and presses OK; returns the
    // dialog's problem text when it stayed open (and closes it), empty when it was accepted.
    static QString addProfile(QWidget *panel, const QString &name, int width, int height, int kbps,
                              const QString &screenshot = {})
    {
        auto problem = std::make_shared<QString>();
        onNextDialog<EncodeProfileDialog>([=](EncodeProfileDialog *dialog) {
            typeInto(named<QLineEdit>(dialog, "Profile Name"), name);
            typeInto(named<QSpinBox>(dialog, "Profile Width"), QString::number(width));
            typeInto(named<QSpinBox>(dialog, "Profile Height"), QString::number(height));
            typeInto(named<QSpinBox>(dialog, "Profile Bitrate"), QString::number(kbps));
            if (!screenshot.isEmpty())
                dialog->grab().save(screenshot);
            QTest::mouseClick(named<QPushButton>(dialog, "OK"), Qt::LeftButton);
            if (dialog->isVisible()) {
                *problem = named<QLabel>(dialog, "Profile Problem")->text();
                if (problem->isEmpty())
                    *problem = "(refused without a reason)";
                dialog->reject();
            }
        });
        QTest::mouseClick(named<QPushButton>(panel, "Add Profile"), Qt::LeftButton);
        return *problem;
    }

    static int profileRow(QWidget *panel, const QString &name)
    {
        auto *table = named<QTableWidget>(panel, "Encode Profile List");
        for (int row = 0; table && row < table->rowCount(); ++row)
            if (table->item(row, 0)->text() == name)
                return row;
        return -1;
    }

private slots:
    void profileDialogRefusesBadAndTakenNames()
    {
        MainWindow w;
        w.show();
        QVERIFY(QTest::qWaitForWindowExposed(&w));
        QWidget *panel = w.outputPanel();
        QVERIFY(addProfile(panel, "mobile", 854, 480, 1200).isEmpty());
        QVERIFY(profileRow(panel, "mobile") >= 0);

        const QString bad = addProfile(panel, "my profile!", 640, 360, 800);
        QVERIFY2(bad.contains("letters, digits"), qPrintable(bad));
        const QString taken = addProfile(panel, "mobile", 640, 360, 800);
        QVERIFY2(taken.contains("two profiles named \"mobile\""), qPrintable(taken));
        const QString reserved = addProfile(panel, "default", 640, 360, 800);
        QVERIFY2(reserved.contains("\"default\""), qPrintable(reserved));
        const QString odd = addProfile(panel, "odd", 641, 360, 800);
        QVERIFY2(odd.contains("even width"), qPrintable(odd));
        // Only the good one made it, and only it is kept.
        auto *table = named<QTableWidget>(panel, "Encode Profile List");
        QCOMPARE(table->rowCount(), 1);
        QCOMPARE(selvane::StoredSettings().value("output/profiles/0/name").toString(),
                 QString("mobile"));
        QVERIFY(!selvane::StoredSettings().contains("output/profiles/1/name"));
        QCOMPARE(w.outputPanel()->settings().encoder.profiles.size(), 1);
        QCOMPARE(w.outputPanel()->settings().encoder.profiles[0].size, QSize(854, 480));

        // Removed again: the next test starts from no profile.
        clickRow(table, profileRow(panel, "mobile"));
        QTest::mouseClick(named<QPushButton>(panel, "Remove Profile"), Qt::LeftButton);
        QCOMPARE(table->rowCount(), 0);
        QVERIFY(!selvane::StoredSettings().contains("output/profiles/0/name"));
    }

    void stepDownShowsInTheStatus()
    {
        // An adaptive encode the engine stepped down to 2500 of 6000 kbit/s stands out; one at
        // its set bitrate does not.
        OutputStatusView view;
        selvane::OutputStats stats;
        stats.running = true;
        selvane::EncodeStats e;
        e.profile = "default";
        e.source = "program";
        e.size = QSize(1920, 1080);
        e.fps = 30;
        e.adaptive = true;
        e.setKbps = 6000;
        e.currentKbps = 2500;
        e.bitrateSteps = 3;
        stats.encodes << e;
        view.showStats(stats, e.size, e.fps);
        // Thousands apart by a space that does not break.
        const QString stepped = QString::fromUtf8("2\u00A0500 / 6\u00A0000 kbit/s");
        QVERIFY2(view.text().contains(stepped), qPrintable(view.text()));
        QVERIFY(view.text().contains("stepped down"));
        stats.encodes[0].currentKbps = 6000;
        view.showStats(stats, e.size, e.fps);
        QVERIFY(!view.text().contains("stepped down"));
        QVERIFY(view.text().contains("adaptive"));
    }

    void lowProfileHlsFolderAndChannelRecording()
    {
        QTemporaryDir dir;
        const QString take = QDir(dir.path()).filePath("take.mp4");
        const QString playlist = QDir(dir.path()).filePath("hls/live.m3u8");
        MainWindow w;
        w.show();
        QVERIFY(QTest::qWaitForWindowExposed(&w));
        QWidget *panel = w.outputPanel();
        QVERIFY(!w.engine()->setChannelSource(
            0, "lavfi://testsrc2=size=1280x720:rate=30[out0];sine=frequency=1000[out1]"));
        QVERIFY(!w.engine()->setChannelSource(
            1, "lavfi://smptebars=size=800x600:rate=30[out0];sine=frequency=440[out1]"));
        w.engine()->cutTo(0);

        // A profile "low" at 640x360.
        QDir shots(QDir::current().filePath("screenshots"));
        shots.mkpath(".");
        QCOMPARE(addProfile(panel, "low", 640, 360, 800, shots.filePath("profile_dialog_en.png")),
                 QString());
        const int low = profileRow(panel, "low");
        QVERIFY(low >= 0);
        auto *profiles = named<QTableWidget>(panel, "Encode Profile List");
        QVERIFY(profiles->item(low, 1)->text().startsWith(QString("640×360")));
        QVERIFY(profiles->item(low, 2)->text().startsWith(QString("800 kbit/s")));

        // An HLS folder on it.
        onNextDialog<StreamTargetDialog>([&](StreamTargetDialog *dialog) {
            chooseByKeys(named<QComboBox>(dialog, "Target kind"), "HLS folder");
            typeInto(named<QLineEdit>(dialog, "Playlist Path"), playlist);
            auto *segment = named<QSpinBox>(dialog, "HLS Segment Seconds");
            QVERIFY(segment && segment->isVisible());
            typeInto(segment, "1");
            chooseByKeys(named<QComboBox>(dialog, "Target Profile"), "low");
            dialog->grab().save(shots.filePath("hls_target_dialog_en.png"));
            QTest::mouseClick(named<QPushButton>(dialog, "OK"), Qt::LeftButton);
            QVERIFY(!dialog->isVisible());
        });
        QTest::mouseClick(named<QPushButton>(panel, "Add Target"), Qt::LeftButton);
        auto *targets = named<QTableView>(panel, "Stream targets");
        QCOMPARE(targets->model()->rowCount(), 1);
        QCOMPARE(targets->model()->index(0, 3).data().toString(), QString("low"));
        QCOMPARE(selvane::StoredSettings().value("output/streams/0/profile").toString(),
                 QString("low"));

        // Channel 2 on its own, beside the recording.
        auto *iso2 = named<QCheckBox>(panel, "Record Channel 2 On Its Own");
        QVERIFY(iso2);
        QTest::mouseClick(iso2, Qt::LeftButton);
        QVERIFY(iso2->isChecked());
        auto *record = named<QCheckBox>(panel, "Record to file");
        if (!record->isChecked())
            QTest::mouseClick(record, Qt::LeftButton);
        QVERIFY(record->isChecked());
        typeInto(named<QLineEdit>(panel, "Recording file"), take);
        QTest::keyClick(named<QLineEdit>(panel, "Recording file"), Qt::Key_Return);

        QVERIFY(panel->grab().save(shots.filePath("output_profiles_en.png")));
        w.setLanguage(true);
        QTest::qWait(800);
        QVERIFY(panel->grab().save(shots.filePath("output_profiles_zh.png")));
        w.setLanguage(false);
        QTest::qWait(800);

        QSignalSpy started(w.engine(), &Engine::outputsStarted);
        QTest::mouseClick(named<QPushButton>(panel, "Start Outputs"), Qt::LeftButton);
        QVERIFY(started.wait(15000));
        // Each encode and the channel's file are shown while they run.
        auto *status = named<QLabel>(&w, "Output status");
        QVERIFY(status);
        QTRY_VERIFY2_WITH_TIMEOUT(status->text().contains("Encode low (program)  640x360") &&
                                      status->text().contains("Channel 2 on its own take_iso2.mp4"),
                                  qPrintable(status->text()), 5000);
        QTest::qWait(3000);
        const selvane::EngineStats running = w.engine()->stats();
        const QSize programSize = running.program.size;
        const QString recorded = running.output.file.path;
        // The recording's encode, the profile the HLS folder takes, channel 2's own.
        QCOMPARE(running.output.encodes.size(), 3);
        const selvane::EncodeStats *lowEncode = nullptr;
        for (const selvane::EncodeStats &e : running.output.encodes) {
            QVERIFY2(e.setKbps > 0 && !e.failed && e.framesWritten > 0, qPrintable(e.profile));
            if (e.profile == "low" && e.source == "program")
                lowEncode = &e;
        }
        QVERIFY(lowEncode);
        QCOMPARE(lowEncode->size, QSize(640, 360));
        QCOMPARE(lowEncode->setKbps, qint64(800));
        // Its bitrate as the encoder has it, now and as set, in the status.
        QTRY_VERIFY2_WITH_TIMEOUT(status->text().contains(OutputStatusView::bitrateText(
                                      lowEncode->currentKbps, lowEncode->setKbps)),
                                  qPrintable(status->text()), 2000);
        QCOMPARE(running.output.isoRecordings.size(), 1);
        const QString iso = running.output.isoRecordings[0].file.path;
        QCOMPARE(QFileInfo(iso).fileName(), QString("take_iso2.mp4"));

        // The same words in a view wide enough to read them whole, for the screenshot.
        OutputStatusView shown;
        shown.resize(480, 300);
        shown.showStats(w.engine()->stats().output, programSize, running.program.fps);
        QVERIFY(shown.grab().save(shots.filePath("output_encodes_en.png")));
        QSignalSpy stopped(w.engine(), &Engine::outputsStopped);
        QTest::mouseClick(named<QPushButton>(panel, "Stop Outputs"), Qt::LeftButton);
        QVERIFY(stopped.wait(15000));

        // The recording at the program's size, the HLS pictures at the profile's.
        QVERIFY(programSize.isValid());
        QCOMPARE(QFileInfo(recorded).absoluteFilePath(), QFileInfo(take).absoluteFilePath());
        QCOMPARE(pictureSize(take), programSize);
        QVERIFY(QFileInfo::exists(playlist));
        QCOMPARE(pictureSize(playlist), QSize(640, 360));
        const ProbedFile hls = probeFile(playlist);
        QVERIFY2(hls.ok && hls.stream("h264") && hls.stream("h264")->frames >= 45,
                 hls.errors.constData());
        // Channel 2's own file: its own pictures, decoding whole.
        QVERIFY(QFileInfo::exists(iso));
        const ProbedFile probedIso = probeFile(iso);
        QVERIFY2(probedIso.ok && probedIso.stream("h264"), probedIso.errors.constData());
        QVERIFY2(probedIso.stream("h264")->frames >= 75,
                 qPrintable(QString::number(probedIso.stream("h264")->frames)));
        QVERIFY(probedIso.stream("aac"));
        const QByteArray isoErrors = decodeErrors(iso);
        QVERIFY2(isoErrors.isEmpty(), isoErrors.constData());
        // SMPTE bars on channel 2, the moving test pattern on the program: the files differ.
        QVERIFY(videoPacketHashes(iso) != videoPacketHashes(take));

        // Renamed, the profile stays the target's.
        clickRow(profiles, profileRow(panel, "low"));
        onNextDialog<EncodeProfileDialog>([](EncodeProfileDialog *dialog) {
            typeInto(named<QLineEdit>(dialog, "Profile Name"), "small");
            QTest::mouseClick(named<QPushButton>(dialog, "OK"), Qt::LeftButton);
            QVERIFY(!dialog->isVisible());
        });
        QTest::mouseClick(named<QPushButton>(panel, "Edit Profile"), Qt::LeftButton);
        QCOMPARE(profileRow(panel, "low"), -1);
        QCOMPARE(targets->model()->index(0, 3).data().toString(), QString("small"));
        QCOMPARE(selvane::StoredSettings().value("output/streams/0/profile").toString(),
                 QString("small"));

        // The profile removed while the target still names it: the engine refuses the start and
        // the window says why.
        clickRow(profiles, profileRow(panel, "small"));
        QTest::mouseClick(named<QPushButton>(panel, "Remove Profile"), Qt::LeftButton);
        QCOMPARE(profileRow(panel, "small"), -1);
        QCOMPARE(targets->model()->index(0, 3).data(Qt::ForegroundRole).value<QColor>(),
                 QColor("#ff5a5a"));
        QTest::mouseClick(named<QPushButton>(panel, "Start Outputs"), Qt::LeftButton);
        QMessageBox *box = nullptr;
        QTRY_VERIFY_WITH_TIMEOUT((box = w.findChild<QMessageBox *>("outputMessage")), 3000);
        QVERIFY2(box->text().contains("There is no profile named \"small\""),
                 qPrintable(box->text()));
        box->close();
        QVERIFY(!w.engine()->outputsActive());
    }
};

SELVANE_GUI_TEST_MAIN(TestWindowProfiles)

#include "test_window_profiles.moc"
