// The mixer window driven as an operator drives it (offscreen): the source dialog, Take and the
// cut keys into a real recording, every refusal before outputs start, the meters on a tone and on
// silence, both languages in every open panel, the layout; and the real executable under Xvfb
// with a show and --start-outputs, ended by SIGTERM, with screenshots in both languages.

#include "GuiSupport.h"
#include "app/Language.h"
#include "app/MainWindow.h"
#include "engine/Engine.h"
#include "media/StoredSettings.h"
#include "panels/AudioMixerPanel.h"
#include "panels/ChannelPanel.h"
#include "panels/LevelMeter.h"
#include "panels/MultiviewWindow.h"
#include "panels/OutputFolder.h"
#include "panels/OutputSettingsPanel.h"
#include "panels/ProgramPreview.h"
#include "panels/SourceDialog.h"

#include <QAction>
#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QDesktopServices>
#include <QDockWidget>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QMenuBar>
#include <QMessageBox>
#include <QPushButton>
#include <QRadioButton>
#include <QSettings>
#include <QSignalSpy>
#include <QSlider>
#include <QSpinBox>
#include <QStandardPaths>
#include <QTableView>
#include <QTimer>
#include <QtTest>
#include <cstdlib>

using namespace testsupport;
using selvane::AudioMixerPanel;
using selvane::Engine;
using selvane::LevelMeter;
using selvane::OutputSettingsPanel;
// ---- helpers for driving the window as an operator ----

class UrlRecorder : public QObject
{
    Q_OBJECT
public:
    QList<QUrl> opened;
public slots:
    void open(const QUrl &url) { opened << url; }
};

class TestMainWindow : public QObject
{
    Q_OBJECT

private:
    static QStringList menuTexts(QMenu *menu)
    {
        QStringList texts;
        for (QAction *action : menu->actions())
            texts << (action->menu() ? action->menu()->title() : action->text());
        return texts;
    }
    static QList<QMenu *> topMenus(MainWindow &w)
    {
        QList<QMenu *> menus;
        for (QAction *action : w.menuBar()->actions())
            menus << action->menu();
        return menus;
    }
    static QString storedLanguage()
    {
        return QSettings("Ostrel", "Selvane").value("ui_language", "<absent>").toString();
    }
    static void clearSettings() { QSettings("Ostrel", "Selvane").clear(); }

    // The window shown with bars and tone on channel 1, taken, and the red colour on channel 2.
    static bool showBarsAndColour(MainWindow &w)
    {
        w.show();
        if (!QTest::qWaitForWindowExposed(&w))
            return false;
        chooseTestSignal(w, 0, "Bars and tone");
        chooseTestSignal(w, 1, "Colour");
        if (!QTest::qWaitFor([&] { return w.channelPanel(1)->stateText() == "playing"; }, 10000))
            return false;
        QTest::mouseClick(named<QPushButton>(w.channelPanel(0), "Take"), Qt::LeftButton);
        return true;
    }

    // Channel panel -> Choose Source -> Test signal -> preset (and colour) -> OK.
    static void chooseTestSignal(MainWindow &w, int channel, const QString &preset,
                                 const QString &colour = {})
    {
        onNextDialog([preset, colour](QDialog *dialog) {
            QTest::mouseClick(named<QRadioButton>(dialog, "Test signal"), Qt::LeftButton);
            auto *presets = named<QComboBox>(dialog, "Test signal preset");
            presets->setCurrentIndex(presets->findText(preset));
            if (!colour.isEmpty()) {
                auto *colours = named<QComboBox>(dialog, "Test signal colour");
                colours->setCurrentIndex(colours->findText(colour));
            }
            QTest::mouseClick(named<QPushButton>(dialog, "OK"), Qt::LeftButton);
        });
        QTest::mouseClick(named<QPushButton>(w.channelPanel(channel), "Choose Source"),
                          Qt::LeftButton);
    }

private slots:
    void init() { clearSettings(); }

    void frameInEnglish()
    {
        MainWindow w;
        QCOMPARE(w.windowTitle(), QString("Selvane"));
        QVERIFY(w.windowState() & Qt::WindowMaximized);
        QVERIFY(w.centralWidget());
        const QList<QMenu *> menus = topMenus(w);
        QCOMPARE(menus.size(), 6);
        QCOMPARE(menuTexts(menus[5]->actions()[0]->menu()), QStringList({"English", "中文"}));
        QCOMPARE(w.findChildren<QDockWidget *>().size(), 6);
        for (int i = 0; i < MainWindow::DockCount; ++i)
            QVERIFY(!w.dock(static_cast<MainWindow::DockId>(i))->windowTitle().isEmpty());
        // What is not built yet is not offered: no disabled placeholders (Stop Outputs waits
        // for outputs to run, Undo and Redo for something to undo or redo).
        const QStringList waiting{"stopOutputsAction", "drawingUndoAction", "drawingRedoAction"};
        for (QMenu *menu : menus)
            for (QAction *action : menu->actions())
                QVERIFY(!action->isVisible() || action->isEnabled() ||
                        waiting.contains(action->objectName()));
        // Automation finds every channel and its buttons by fixed names.
        for (int c = 0; c < 4; ++c) {
            QWidget *panel = named<QWidget>(&w, QString("Channel %1").arg(c + 1));
            QVERIFY(panel);
            for (const char *button : {"Choose Source", "Take", "Clear"})
                QVERIFY(named<QPushButton>(panel, button));
        }
        QVERIFY(named<QWidget>(&w, "Program preview"));

        // A laptop screen holds the whole window, and the output panel is not cut off at the
        // side of its dock.
        w.setWindowState(Qt::WindowNoState);
        w.resize(1366, 740);
        w.show();
        QVERIFY(QTest::qWaitForWindowExposed(&w));
        QVERIFY2(w.minimumSizeHint().width() <= 1366,
                 qPrintable(QString::number(w.minimumSizeHint().width())));
        auto *outputPanel = w.findChild<QWidget *>("outputSettingsPanel");
        QVERIFY(outputPanel && outputPanel->parentWidget());
        QTRY_VERIFY2(outputPanel->width() <= outputPanel->parentWidget()->width(),
                     qPrintable(QString("%1 > %2")
                                    .arg(outputPanel->width())
                                    .arg(outputPanel->parentWidget()->width())));
    }

    void languageSwitchPersistsAndRetranslates()
    {
        MainWindow w;
        QVERIFY(!w.isChinese());
        w.setLanguage(true);
        QVERIFY(w.isChinese());
        QCOMPARE(storedLanguage(), QString("zh"));
        QCOMPARE(topMenus(w)[0]->title(), QString("文件(&F)"));
        QCOMPARE(menuTexts(topMenus(w)[0]),
                 QStringList({"导出涂鸦...", "打开输出文件夹", "退出(&X)"}));
        QCOMPARE(w.dock(MainWindow::OutputSettingsDock)->windowTitle(), QString("输出设置"));
        QCOMPARE(w.dock(MainWindow::ImagePlaybackDock)->windowTitle(), QString("图片播放"));
        // The open panels follow.
        // (Panels hear of the language through posted LanguageChange events.)
        QTRY_COMPARE(named<QPushButton>(w.channelPanel(0), "Take")->text(), QString("切入"));
        QCOMPARE(named<QPushButton>(w.outputPanel(), "Start Outputs")->text(), QString("开始输出"));
        QVERIFY(!w.mixerPanel()->findChildren<QLabel *>().isEmpty());
        bool programLabel = false;
        for (QLabel *label : w.mixerPanel()->findChildren<QLabel *>())
            programLabel = programLabel || label->text() == QString("节目");
        QVERIFY(programLabel);

        // Choosing the language already set writes nothing.
        clearSettings();
        w.setLanguage(true);
        QCOMPARE(storedLanguage(), QString("<absent>"));

        w.setLanguage(false);
        QCOMPARE(storedLanguage(), QString("en"));
        QCOMPARE(topMenus(w)[0]->title(), QString("&File"));
        QCOMPARE(w.dock(MainWindow::AudioMixerDock)->windowTitle(), QString("Audio Mixer"));
        QTRY_COMPARE(named<QPushButton>(w.channelPanel(0), "Take")->text(), QString("Take"));
    }

    void storedLanguageIsReadAtStart_data()
    {
        QTest::addColumn<QString>("stored");
        QTest::addColumn<bool>("chinese");
        QTest::newRow("ZH_CN") << "ZH_CN" << true;
        QTest::newRow("zh-tw") << "zh-tw" << false;
        QTest::newRow("garbage") << "fr" << false;
    }

    void storedLanguageIsReadAtStart()
    {
        QFETCH(QString, stored);
        QFETCH(bool, chinese);
        QSettings("Ostrel", "Selvane").setValue("ui_language", stored);
        MainWindow w;
        QCOMPARE(w.isChinese(), chinese);
        QCOMPARE(w.dock(MainWindow::TextOverlayDock)->windowTitle(),
                 chinese ? QString("文字叠加") : QString("Text Overlay"));
        w.setLanguage(false);
    }

    void openOutputFolderOpensTheRecordingFolder()
    {
        QTemporaryDir dir;
        const QString recordings = QDir(dir.path()).filePath("recordings");
        QSettings("Ostrel", "Selvane").setValue("output/filePath", recordings + "/show.mp4");
        MainWindow w;
        UrlRecorder recorder;
        QDesktopServices::setUrlHandler("file", &recorder, "open");
        w.openOutputFolder();
        QDesktopServices::unsetUrlHandler("file");
        QCOMPARE(recorder.opened.size(), 1);
        QCOMPARE(recorder.opened[0].toLocalFile(), recordings);
        QVERIFY(QDir(recordings).exists()); // created so that the browser has something to show
    }

    void resetWorkspaceRestoresEveryDock()
    {
        MainWindow w;
        w.dock(MainWindow::AudioMixerDock)->setFloating(true);
        w.dock(MainWindow::TextOverlayDock)->hide();
        w.removeDockWidget(w.dock(MainWindow::OutputSettingsDock));
        w.resetWorkspaceLayout();
        for (MainWindow::DockId id : {MainWindow::OutputSettingsDock, MainWindow::OutputPreviewDock,
                                      MainWindow::AudioMixerDock}) {
            QVERIFY(!w.dock(id)->isFloating());
            QVERIFY(!w.dock(id)->isHidden());
        }
        QCOMPARE(w.dockWidgetArea(w.dock(MainWindow::OutputSettingsDock)), Qt::LeftDockWidgetArea);
        QCOMPARE(w.dockWidgetArea(w.dock(MainWindow::AudioMixerDock)), Qt::RightDockWidgetArea);
        QCOMPARE(w.dockWidgetArea(w.dock(MainWindow::ImagePlaybackDock)), Qt::LeftDockWidgetArea);
        QVERIFY(!w.dock(MainWindow::TextOverlayDock)->isHidden());
    }
    // ---- the operator's show: two test signals, a take, a recording, a cut with the key ----

    void operatorCutsBetweenTwoChannelsIntoARecording()
    {
        QTemporaryDir dir;
        const QString file = QDir(dir.path()).filePath("show.mp4");
        MainWindow w;
        QVERIFY(showBarsAndColour(w));

        auto *recording = named<QLineEdit>(w.outputPanel(), "Recording file");
        QVERIFY(recording);
        recording->selectAll();
        QTest::keyClicks(recording, file);
        QTest::mouseClick(named<QPushButton>(w.outputPanel(), "Start Outputs"), Qt::LeftButton);
        QTRY_VERIFY_WITH_TIMEOUT(w.engine()->stats().output.running, 10000);
        QTRY_VERIFY_WITH_TIMEOUT(w.programPreview()->tally(), 2000);
        QTRY_VERIFY_WITH_TIMEOUT(w.programPreview()->hasSignal(), 5000);
        // The button, the key and the Program menu are one action each, which follows the
        // outputs.
        auto *startAction = w.findChild<QAction *>("startOutputsAction");
        auto *stopAction = w.findChild<QAction *>("stopOutputsAction");
        QVERIFY(startAction && stopAction && !startAction->isEnabled() && stopAction->isEnabled());
        auto *take2 = w.findChild<QAction *>("take2Action");
        QVERIFY(take2 && take2->shortcut() == QKeySequence(Qt::Key_2));
        QSignalSpy takes(take2, &QAction::triggered);
        QTest::qWait(2500);

        w.activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(&w));
        QTest::keyClick(&w, Qt::Key_2);
        QVERIFY(w.channelPanel(1)->isOnProgram());
        QCOMPARE(takes.count(), 1);
        QTest::qWait(2500);
        qInfo("program preview: %lld pictures painted, %.0f us each on the window thread",
              w.programPreview()->paintedFrames(), w.programPreview()->averagePaintUs());
        QSignalSpy stopped(w.engine(), &Engine::outputsStopped);
        QTest::mouseClick(named<QPushButton>(w.outputPanel(), "Stop Outputs"), Qt::LeftButton);
        QVERIFY(stopped.wait(15000));
        QVERIFY(!w.programPreview()->tally());
        QVERIFY(startAction->isEnabled() && !stopAction->isEnabled());

        const QString written = w.engine()->stats().output.file.path.isEmpty()
                                    ? file
                                    : w.engine()->stats().output.file.path;
        const ProbedFile probed = probeFile(written);
        QVERIFY2(probed.ok, probed.errors.constData());
        QVERIFY(probed.duration > 4.0);
        // Bars before the cut (grey on average), the red field after it.
        const QColor before = averageColour(written, 1.0);
        const QColor after = averageColour(written, -0.5);
        QVERIFY2(qAbs(before.red() - before.green()) < 60, qPrintable(before.name()));
        QVERIFY2(after.red() > 180 && after.green() < 60 && after.blue() < 60,
                 qPrintable(after.name()));
    }

    void productionDeskTakesAndFades()
    {
        QTemporaryDir dir;
        const QString file = QDir(dir.path()).filePath("production.mp4");
        MainWindow w;
        QVERIFY(showBarsAndColour(w));
        // A click on channel 2's picture puts it on the preview bus, framed green.
        QTest::mouseClick(named<QWidget>(w.channelPanel(1), "Channel 2 picture"), Qt::LeftButton);
        QCOMPARE(w.engine()->previewChannel(), 1);
        QVERIFY(w.channelPanel(1)->isOnPreview());
        auto *monitor = named<QWidget>(&w, "Preview Monitor");
        QTRY_VERIFY_WITH_TIMEOUT(
            QColor(monitor->grab().toImage().pixel(monitor->rect().center())).red() > 180, 3000);
        // A mix of half a second.
        auto *kind = named<QComboBox>(&w, "Transition");
        kind->setFocus();
        QTest::keyClick(kind, Qt::Key_Down);
        QCOMPARE(w.engine()->transition().kind, selvane::TransitionKind::Mix);
        auto *duration = named<QSpinBox>(&w, "Transition Duration");
        duration->setFocus();
        duration->selectAll();
        QTest::keyClicks(duration, "500");
        QTest::keyClick(duration, Qt::Key_Return); // ends the typing, takes nothing
        QCOMPARE(w.engine()->transition().durationMs, 500);
        QCOMPARE(w.engine()->previewChannel(), 1);

        auto *recording = named<QLineEdit>(w.outputPanel(), "Recording file");
        recording->selectAll();
        QTest::keyClicks(recording, file);
        QTest::mouseClick(named<QPushButton>(w.outputPanel(), "Start Outputs"), Qt::LeftButton);
        QTRY_VERIFY_WITH_TIMEOUT(w.engine()->stats().output.running, 10000);
        QTest::qWait(1500);
        // Enter takes the preview with the mix; the bars go to the preview.
        w.activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(&w));
        QTest::keyClick(&w, Qt::Key_Return);
        QCOMPARE(w.engine()->transitionTarget(), 1);
        QTRY_COMPARE_WITH_TIMEOUT(w.engine()->previewChannel(), 0, 2000);
        QVERIFY(w.channelPanel(1)->isOnProgram() && w.channelPanel(0)->isOnPreview());
        QTest::qWait(1000);
        // The T-bar half way, then all the way: the bars are back on air, the bar at rest.
        auto *tbar = named<QSlider>(&w, "T-Bar");
        tbar->setSliderPosition(tbar->maximum() / 2);
        QCOMPARE(w.engine()->tbar(), 0.5);
        QTest::qWait(500);
        tbar->setSliderPosition(tbar->maximum());
        QTRY_COMPARE_WITH_TIMEOUT(w.engine()->programChannel(), 0, 2000);
        QCOMPARE(tbar->value(), 0);
        QTest::qWait(1000);
        // A stinger, its clip chosen in the file dialog, switching after 200 ms of its 600.
        const QString clip = QDir(dir.path()).filePath("stinger.mov");
        QVERIFY(runFfmpeg({"-f", "lavfi", "-i", "color=c=blue:s=160x90:r=30:d=0.6,format=rgba",
                           "-c:v", "qtrle", clip}));
        kind->setFocus();
        QTest::keyClick(kind, Qt::Key_End);
        auto *cutAt = named<QSpinBox>(&w, "Stinger Cut Point");
        QVERIFY(cutAt->isVisible());
        cutAt->setFocus();
        cutAt->selectAll();
        QTest::keyClicks(cutAt, "200");
        onNextDialog([&](QDialog *dialog) {
            auto *name = dialog->findChild<QLineEdit *>("fileNameEdit");
            QVERIFY(name);
            name->setText(clip);
            QTest::keyClick(name, Qt::Key_Return);
        });
        QTest::mouseClick(named<QPushButton>(&w, "Choose Stinger Clip"), Qt::LeftButton);
        QCOMPARE(w.engine()->transition().kind, selvane::TransitionKind::Stinger);
        QCOMPARE(w.engine()->transition().cutMs, 200);
        auto *state = named<QLabel>(&w, "Stinger State");
        QTRY_VERIFY_WITH_TIMEOUT(state->text().startsWith("Ready: 0.60 s, switch at 0.20 s"), 5000);
        QSignalSpy took(w.engine(), &Engine::transitionStarted);
        w.activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(&w));
        QTest::keyClick(&w, Qt::Key_Return);
        QCOMPARE(took.count(), 1);
        QCOMPARE(took.last().at(1).value<selvane::Transition>().durationMs, 600);
        QTRY_COMPARE_WITH_TIMEOUT(w.engine()->programChannel(), 1, 2000);
        QTest::qWait(500);
        // Fade to black: the button blinks while the program is black.
        auto *fade = named<QPushButton>(&w, "Fade to Black");
        QTest::mouseClick(fade, Qt::LeftButton);
        QVERIFY(w.engine()->fadedToBlack());
        QTRY_VERIFY_WITH_TIMEOUT(!fade->styleSheet().isEmpty(), 2000);
        QTest::qWait(1500);
        QSignalSpy stopped(w.engine(), &Engine::outputsStopped);
        QTest::mouseClick(named<QPushButton>(w.outputPanel(), "Stop Outputs"), Qt::LeftButton);
        QVERIFY(stopped.wait(15000));

        const QString written = w.engine()->stats().output.file.path;
        // Red (channel 2's colour) after the first take, black at the end.
        const QColor red = averageColour(written, 3.0);
        QVERIFY2(red.red() > 180 && red.green() < 60, qPrintable(red.name()));
        const QColor black = averageColour(written, -0.3);
        QVERIFY2(qGray(black.rgb()) < 20, qPrintable(black.name()));
    }

    void multiviewShowsEveryPictureWithItsTally()
    {
        MainWindow w;
        QVERIFY(showBarsAndColour(w));
        w.engine()->setPreviewChannel(1);
        w.activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(&w));
        QTest::keyClick(&w, Qt::Key_F10); // View > Multiview
        auto *multiview = w.findChild<selvane::MultiviewWindow *>();
        QVERIFY(multiview && multiview->isVisible());
        QVERIFY(QTest::qWaitForWindowExposed(multiview));
        const auto colourAt = [&](int tile, QPoint offset = {}) {
            return QColor(
                multiview->grab().toImage().pixel(multiview->tileRect(tile).center() + offset));
        };
        const auto red = [](const QColor &c) {
            return c.red() > 180 && c.green() < 70 && c.blue() < 70;
        };
        // Channel 2 (red) on its tile and on the preview's; the bars on program's and 1's.
        const int channel2 = selvane::MultiviewWindow::FirstChannelTile + 1;
        QTRY_VERIFY_WITH_TIMEOUT(red(colourAt(channel2)), 5000);
        QTRY_VERIFY_WITH_TIMEOUT(red(colourAt(selvane::MultiviewWindow::PreviewTile)), 5000);
        QTRY_VERIFY_WITH_TIMEOUT(
            !red(colourAt(selvane::MultiviewWindow::ProgramTile, {0, -40})) &&
                qGray(colourAt(selvane::MultiviewWindow::ProgramTile, {0, -40}).rgb()) > 60,
            5000);
        // Tally frames: channel 1 red (program), channel 2 green (preview).
        const QImage shot = multiview->grab().toImage();
        const QColor frame1(
            shot.pixel(multiview->tileRect(selvane::MultiviewWindow::FirstChannelTile).topLeft() +
                       QPoint(1, 20)));
        const QColor frame2(shot.pixel(multiview->tileRect(channel2).topLeft() + QPoint(1, 20)));
        QVERIFY2(red(frame1), qPrintable(frame1.name()));
        QVERIFY2(frame2.green() > 150 && frame2.red() < 90, qPrintable(frame2.name()));
        QDir shots(QDir::current().filePath("screenshots"));
        shots.mkpath(".");
        shot.save(shots.filePath("multiview_en.png"));
        w.setLanguage(true);
        QTest::qWait(600);
        multiview->grab().save(shots.filePath("multiview_zh.png"));
        w.setLanguage(false);
        // Closed, it lets go of its pictures and the menu says so.
        multiview->close();
        QVERIFY(!w.findChild<QAction *>("multiviewAction")->isChecked());
    }

    // A channel that fails on air: its backup chosen on its panel, failover turned on beside the
    // outputs, the publisher killed; the panel says what stands in, the program shows it, and
    // the slate goes on air by its button.
    void failoverShowsWhatStandsIn()
    {
        RtmpServer nginx;
        QVERIFY(nginx.start());
        QProcess publisher;
        publisher.start("ffmpeg", {"-nostdin",
                                   "-v",
                                   "error",
                                   "-re",
                                   "-f",
                                   "lavfi",
                                   "-i",
                                   "color=c=blue:size=320x240:rate=30",
                                   "-c:v",
                                   "libx264",
                                   "-preset",
                                   "ultrafast",
                                   "-tune",
                                   "zerolatency",
                                   "-g",
                                   "15",
                                   "-pix_fmt",
                                   "yuv420p",
                                   "-f",
                                   "flv",
                                   nginx.url("blue")});
        MainWindow w;
        QVERIFY(showBarsAndColour(w)); // bars on 1 (on air), red on 2
        w.engine()->setChannelSource(2, nginx.url("blue"));
        QTRY_VERIFY_WITH_TIMEOUT(w.channelPanel(2)->stateText() == "live", 15000);
        QTest::mouseClick(named<QPushButton>(w.channelPanel(2), "Take"), Qt::LeftButton);
        // Channel 3's backup: channel 2, from the panel's menu.
        QTimer::singleShot(300, [] {
            for (QWidget *top : QApplication::topLevelWidgets()) {
                auto *menu = qobject_cast<QMenu *>(top);
                if (!menu || !menu->isVisible())
                    continue;
                for (QAction *action : menu->actions())
                    if (action->text() == "Channel 2")
                        action->trigger();
                menu->close();
            }
        });
        QTest::mouseClick(named<QPushButton>(w.channelPanel(2), "Backup"), Qt::LeftButton);
        QTRY_COMPARE_WITH_TIMEOUT(w.engine()->failover().backups[2], QString("channel:2"), 3000);
        QCOMPARE(named<QPushButton>(w.channelPanel(2), "Backup")->text(),
                 QString("Backup: channel 2"));
        auto *on = named<QCheckBox>(w.outputPanel(), "Failover On");
        on->setChecked(true); // as a click does
        QVERIFY(w.engine()->failover().enabled);
        QCOMPARE(QSettings("Ostrel", "Selvane").value("failover/backup3").toString(),
                 QString("channel:2"));

        publisher.kill();
        publisher.waitForFinished(5000);
        QTRY_VERIFY_WITH_TIMEOUT(w.channelPanel(2)->stateText().contains("channel 2 stands in"),
                                 8000);
        QCOMPARE(w.engine()->programChannel(), 2);
        const auto red = [](const QColor &c) {
            return c.red() > 180 && c.green() < 70 && c.blue() < 70;
        };
        auto *program = w.findChild<selvane::ProgramPreview *>();
        QVERIFY(program);
        QTRY_VERIFY_WITH_TIMEOUT(red(program->grab().toImage().pixel(program->rect().center())),
                                 3000);
        QDir shots(QDir::current().filePath("screenshots"));
        shots.mkpath(".");
        w.grab().save(shots.filePath("failover_en.png"));
        w.setLanguage(true);
        QTest::qWait(600);
        w.grab().save(shots.filePath("failover_zh.png"));
        w.setLanguage(false);
        // The slate by its button, off again with a take of channel 1.
        QTest::mouseClick(named<QPushButton>(&w, "Slate"), Qt::LeftButton);
        QTRY_VERIFY_WITH_TIMEOUT(w.engine()->slateOnAir(), 2000);
        QVERIFY(named<QPushButton>(&w, "Slate")->isChecked());
        QTest::qWait(500);
        w.grab().save(shots.filePath("slate_en.png"));
        QTest::mouseClick(named<QPushButton>(w.channelPanel(0), "Take"), Qt::LeftButton);
        QTRY_VERIFY_WITH_TIMEOUT(!named<QPushButton>(&w, "Slate")->isChecked(), 2000);
        QTRY_VERIFY_WITH_TIMEOUT(!w.channelPanel(2)->stateText().contains("stands in"), 2000);
    }

    // ---- every refusal before outputs start is a box titled "Output" ----

    void startRefusalsShowTheirBoxes()
    {
        QTemporaryDir dir;
        MainWindow w;
        w.show();
        OutputSettingsPanel *panel = w.outputPanel();
        auto startAndReadBox = [&] {
            QTest::mouseClick(named<QPushButton>(panel, "Start Outputs"), Qt::LeftButton);
            QMessageBox *box = nullptr;
            QElapsedTimer waited;
            waited.start();
            while (!(box = w.findChild<QMessageBox *>("outputMessage")) && waited.elapsed() < 3000)
                QTest::qWait(20);
            if (!box)
                return QString("(no box)");
            const QString text = box->windowTitle() + "|" + box->text();
            box->close();
            QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
            return text;
        };
        using Target = OutputSettingsPanel::TargetEntry;

        panel->setRecording(false, {});
        panel->setTargets({});
        QCOMPARE(startAndReadBox(),
                 QString("Output|Please fill output file path or stream URL, and select at least "
                         "one output target."));
        // A disabled target is no destination either.
        panel->setTargets({Target{"SRT", false, "srt://127.0.0.1:9", {}}});
        QVERIFY(startAndReadBox().contains("Please fill output file path"));
        // Its box in the table takes it into the outputs and is stored at once; the key never
        // shows.
        auto *table = named<QTableView>(panel, "Stream targets");
        panel->setTargets({Target{"SRT", false, "srt://127.0.0.1:9", {}},
                           Target{"RTMP", true, "rtmp://127.0.0.1/live", "secretkey"}});
        QVERIFY(!table->model()->index(1, 2).data().toString().contains("secretkey"));
        table->setFocus();
        table->setCurrentIndex(table->model()->index(0, 0));
        QTest::keyClick(table, Qt::Key_Space);
        QCOMPARE(panel->settings().encoder.streamTargets.size(), 2);
        QVERIFY(selvane::StoredSettings().value("output/streams/0/enabled").toBool());
        table->setCurrentIndex(table->model()->index(1, 0));
        QTest::mouseClick(named<QPushButton>(panel, "Remove Target"), Qt::LeftButton);
        QCOMPARE(panel->targets().size(), 1);
        QVERIFY(!selvane::StoredSettings().contains("output/streams/1/url"));

        panel->setTargets({Target{"RTMP", true, "srt://127.0.0.1:9", {}}});
        QCOMPARE(startAndReadBox(), QString("Output|Stream RTMP expects a rtmp:// URL."));
        panel->setTargets({Target{"RTMPS", true, "rtmp://127.0.0.1/live", "key"}});
        QCOMPARE(startAndReadBox(), QString("Output|Stream RTMPS expects a rtmps:// URL."));

        panel->setTargets({});
        panel->setRecording(true, QDir(dir.path()).filePath("show.xyz"));
        QVERIFY(startAndReadBox().contains("names no known container"));

        // 8K is HEVC: no RTMP target, and only with a hardware encoder that opens.
        panel->setRecording(false, {});
        auto *resolution = named<QComboBox>(panel, "Output resolution");
        resolution->setCurrentIndex(resolution->count() - 1);
        QCOMPARE(named<QComboBox>(panel, "Encoder mode")->currentIndex(), 1); // forced Hardware
        panel->setTargets({Target{"RTMP", true, "rtmp://127.0.0.1/live", "key"}});
        QVERIFY(startAndReadBox().contains("8K output uses HEVC"));
        panel->setTargets({Target{"SRT", true, "srt://127.0.0.1:9?mode=caller", {}}});
        QVERIFY(startAndReadBox().contains("8K hardware HEVC encoder is unavailable"));
        QVERIFY(!w.engine()->outputsActive());

        // A channel must not read what the outputs write: the recording, given as a file URL.
        resolution->setCurrentIndex(0);
        const QString take = QDir(dir.path()).filePath("take.mp4");
        QVERIFY(makeClip(take, "testsrc2=size=160x90:rate=30", "sine", 1, {}));
        panel->setTargets({});
        panel->setRecording(true, take);
        QString warning;
        onNextDialog([&](QDialog *dialog) {
            QTest::mouseClick(named<QRadioButton>(dialog, "Network stream"), Qt::LeftButton);
            auto *address = named<QLineEdit>(dialog, "Source address");
            address->clear();
            QTest::keyClicks(address, QUrl::fromLocalFile(take).toString());
            onNextDialog([&](QDialog *box) {
                warning = qobject_cast<QMessageBox *>(box)->text();
                box->close();
            });
            QTest::mouseClick(named<QPushButton>(dialog, "OK"), Qt::LeftButton);
        });
        QTest::mouseClick(named<QPushButton>(w.channelPanel(2), "Choose Source"), Qt::LeftButton);
        QTRY_COMPARE(warning, QString("A source cannot be the file the outputs record to."));
        QVERIFY(w.engine()->stats().channels[2].source.isEmpty());
    }

    // ---- the meters: a tone moves them, silence keeps them at the floor ----

    void metersFollowTheSound()
    {
        MainWindow w;
        w.show();
        w.engine()->setChannelSource(
            0, "lavfi://"
               "testsrc2=size=320x240:rate=30[out0];sine=frequency=1000:sample_rate=48000[out1]");
        w.engine()->setChannelSource(
            1, "lavfi://color=c=blue:size=320x240:rate=30[out0];anullsrc=r=48000:cl=stereo[out1]");
        auto *tone = named<LevelMeter>(w.mixerPanel(), "Channel 1 level");
        auto *silence = named<LevelMeter>(w.mixerPanel(), "Channel 2 level");
        QVERIFY(tone && silence);
        // A sine of amplitude 1/8 peaks near -18 dBFS.
        QTRY_VERIFY_WITH_TIMEOUT(tone->peakDb() > -24.0f && tone->peakDb() < -12.0f, 8000);
        QTest::qWait(500);
        QVERIFY2(silence->peakDb() <= -60.0f, qPrintable(QString::number(silence->peakDb())));
        // The meters follow at the stats rate (25 a second; a loaded machine may miss a few,
        // a slow refresh of 4 a second would fail here).
        const qint64 before = tone->updates();
        QTest::qWait(2000);
        QVERIFY2(tone->updates() - before >= 30,
                 qPrintable(QString::number(tone->updates() - before)));
    }

    // ---- closing while on air asks first; an answer of No keeps the show going ----

    void closingWhileOnAirAsksFirst()
    {
        QTemporaryDir dir;
        const QString file = QDir(dir.path()).filePath("closing.mkv");
        MainWindow w;
        w.show();
        w.engine()->setChannelSource(
            0, "lavfi://testsrc2=size=320x240:rate=30[out0];sine=frequency=440[out1]");
        w.outputPanel()->setRecording(true, file);
        QVERIFY(w.startOutputs());
        QTRY_VERIFY_WITH_TIMEOUT(w.engine()->stats().output.running, 10000);
        QString question;
        onNextDialog([&](QDialog *box) {
            question = qobject_cast<QMessageBox *>(box)->text();
            QTest::keyClick(box, Qt::Key_Escape); // No
        });
        w.close();
        QVERIFY(question.contains("Stop the outputs"));
        QVERIFY(w.isVisible());
        QVERIFY(w.engine()->outputsActive());
        QTest::qWait(1000);
        // As on SIGTERM: no question; the window goes once the trailers are written, and the
        // program keeps its frames meanwhile (the close does not block).
        const qint64 framesBefore = w.engine()->stats().program.frames;
        w.closeForShutdown();
        QVERIFY(!w.engine()->outputsActive() || w.isVisible());
        QTRY_VERIFY_WITH_TIMEOUT(!w.isVisible(), 15000);
        QVERIFY(!w.engine()->outputsActive());
        QVERIFY(w.engine()->stats().program.frames >= framesBefore);
        const ProbedFile probed = probeFile(file);
        QVERIFY2(probed.ok, probed.errors.constData());
        QVERIFY(probed.stream("h264") && probed.stream("h264")->frames > 25);
    }

    // ---- the real executable under Xvfb: a show with --start-outputs, SIGTERM, both languages
    // ----

    void realWindowUnderXvfbInBothLanguages()
    {
        const QString xvfb = QStandardPaths::findExecutable("Xvfb");
        QVERIFY2(!xvfb.isEmpty(), "Xvfb is needed (scripts/install-deps.sh installs it)");
        int display = 0;
        for (int n = 100 + int(QCoreApplication::applicationPid() % 300); n < 1000; ++n) {
            if (!QFile::exists(QString("/tmp/.X11-unix/X%1").arg(n)) &&
                !QFile::exists(QString("/tmp/.X%1-lock").arg(n))) {
                display = n;
                break;
            }
        }
        QProcess server;
        server.start(
            xvfb, {QString(":%1").arg(display), "-screen", "0", "1600x900x24", "-nolisten", "tcp"});
        QVERIFY(server.waitForStarted(5000));
        QTRY_VERIFY_WITH_TIMEOUT(QFile::exists(QString("/tmp/.X11-unix/X%1").arg(display)), 10000);
        // Screenshots stay beside the test for a person to look at.
        QDir shots(QDir::current().filePath("screenshots"));
        shots.mkpath(".");

        for (const bool chinese : {false, true}) {
            IsolatedHome home;
            QDir(home.path("config")).mkpath("Ostrel");
            QFile conf(home.path("config/Ostrel/Selvane.conf"));
            QVERIFY(conf.open(QIODevice::WriteOnly));
            conf.write(chinese ? "[General]\nui_language=zh\n" : "[General]\nui_language=en\n");
            conf.close();
            QProcessEnvironment env = home.environment();
            env.insert("QT_QPA_PLATFORM", "xcb");
            // No session bus here: the accessibility bridge must find none at once (under the
            // sanitizers Qt's bus autolaunch otherwise stalls the window's construction).
            if (!env.contains("DBUS_SESSION_BUS_ADDRESS"))
                env.insert("DBUS_SESSION_BUS_ADDRESS", "unix:path=" + home.path("run/no-bus"));
            env.insert("DISPLAY", QString(":%1").arg(display));
            // The Chinese run draws the preview with GL (a software renderer here, which the
            // window would not choose by itself).
            if (chinese) {
                env.insert("SELVANE_PREVIEW", "gpu");
                // The software renderer compiles shaders and registers their unwind tables
                // while holding the unwinder's lock; an allocation there unwound the slow way
                // by AddressSanitizer takes the same lock and hangs. This run keeps the memory
                // checks with fast unwinding; the English run checks for leaks.
                const QString asan = env.value("ASAN_OPTIONS");
                if (asan.contains("fast_unwind_on_malloc=0"))
                    env.insert("ASAN_OPTIONS",
                               QString(asan).replace("fast_unwind_on_malloc=0",
                                                     "fast_unwind_on_malloc=1:detect_leaks=0"));
            }
            const QString take = home.path("take.mp4");
            QProcess app;
            app.setProcessEnvironment(env);
            app.setProcessChannelMode(QProcess::MergedChannels);
            app.start(testsupport::builtProgram("SELVANE_BINARY"),
                      {"--channel",
                       "1=lavfi://smptehdbars=size=1280x720:rate=30[out0];"
                       "sine=frequency=1000:sample_rate=48000[out1]",
                       "--channel",
                       "2=lavfi://testsrc2=size=1280x720:rate=30[out0];"
                       "anullsrc=r=48000:cl=stereo[out1]",
                       "--record", take, "--start-outputs"});
            QVERIFY(app.waitForStarted(5000));
            // A bound, not a wait: under the sanitizers on a busy machine start-up takes long.
            QDeadlineTimer recording(90000);
            while (QFileInfo(take).size() <= 50000 && app.state() == QProcess::Running &&
                   !recording.hasExpired())
                QTest::qWait(100);
            QVERIFY2(app.state() == QProcess::Running && QFileInfo(take).size() > 50000,
                     app.peek(app.bytesAvailable()).right(2000).constData());
            QTest::qWait(1500);
            const QString shot = shots.filePath(chinese ? "window_zh.png" : "window_en.png");
            QFile::remove(shot);
            QVERIFY(runFfmpeg({"-f", "x11grab", "-video_size", "1600x900", "-i",
                               QString(":%1").arg(display), "-frames:v", "1", shot}));
            app.terminate(); // SIGTERM: the outputs end cleanly, then the window
            QVERIFY(app.waitForFinished(30000));
            QCOMPARE(app.exitStatus(), QProcess::NormalExit);
            const QByteArray log = app.readAll();
            QVERIFY2(app.exitCode() == 0, log.right(2000).constData());
            QVERIFY2(!chinese || log.contains("Program preview: drawn by the graphics card"),
                     log.right(2000).constData());

            // The window showed the program on air: the red tally border is there, and the
            // bars' yellow fills far more than a thumbnail's share.
            const QImage image(shot);
            QVERIFY(!image.isNull());
            int tally = 0;
            int yellow = 0;
            for (int y = 0; y < image.height(); y += 2)
                for (int x = 0; x < image.width(); x += 2) {
                    const QColor c = image.pixelColor(x, y);
                    tally += c.red() > 200 && c.green() < 70 && c.blue() < 70;
                    yellow += c.red() > 150 && c.green() > 150 && c.blue() < 60;
                }
            QVERIFY2(tally > 300, qPrintable(QString::number(tally)));
            QVERIFY2(yellow > 1500, qPrintable(QString::number(yellow)));
            const ProbedFile probed = probeFile(take);
            QVERIFY2(probed.ok, probed.errors.constData());
            QVERIFY(probed.stream("h264") && probed.stream("h264")->frames > 60);
            QVERIFY(probed.stream("aac"));
        }
        server.terminate();
        server.waitForFinished(5000);
    }
};

SELVANE_GUI_TEST_MAIN(TestMainWindow)

#include "test_mainwindow.moc"
