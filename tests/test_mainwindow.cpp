// The main window frame on the offscreen platform: menus and docks in both languages, the
// persisted language flag, the output folder action, the workspace reset and Exit.

#include "TestSupport.h"
#include "app/Language.h"
#include "app/MainWindow.h"
#include "app/OutputFolder.h"

#include <QApplication>
#include <QDesktopServices>
#include <QDockWidget>
#include <QMenuBar>
#include <QMessageBox>
#include <QSettings>
#include <QTimer>
#include <QtTest>

#include <cstdlib>

using namespace testsupport;

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

private slots:
    void init() { clearSettings(); }

    void frameInEnglish()
    {
        MainWindow w;
        QCOMPARE(w.windowTitle(), QString("Selvane"));
        QVERIFY(w.windowState() & Qt::WindowMaximized);
        QVERIFY(w.centralWidget());
        const QList<QMenu *> menus = topMenus(w);
        QCOMPARE(menus.size(), 4);
        QCOMPARE(menuTexts(menus[3]->actions()[0]->menu()), QStringList({"English", "中文"}));
        QCOMPARE(w.findChildren<QDockWidget *>().size(), 6);
        for (int i = 0; i < MainWindow::DockCount; ++i)
            QVERIFY(!w.dock(static_cast<MainWindow::DockId>(i))->windowTitle().isEmpty());
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

        // Choosing the language already set writes nothing.
        clearSettings();
        w.setLanguage(true);
        QCOMPARE(storedLanguage(), QString("<absent>"));

        w.setLanguage(false);
        QCOMPARE(storedLanguage(), QString("en"));
        QCOMPARE(topMenus(w)[0]->title(), QString("&File"));
        QCOMPARE(w.dock(MainWindow::AudioMixerDock)->windowTitle(), QString("Audio Mixer"));
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
        for (int i = 0; i < MainWindow::DockCount; ++i) {
            QDockWidget *d = w.dock(static_cast<MainWindow::DockId>(i));
            QVERIFY(!d->isFloating());
            QVERIFY(!d->isHidden());
        }
        QCOMPARE(w.dockWidgetArea(w.dock(MainWindow::OutputSettingsDock)), Qt::LeftDockWidgetArea);
        QCOMPARE(w.dockWidgetArea(w.dock(MainWindow::AudioMixerDock)), Qt::RightDockWidgetArea);
        QCOMPARE(w.dockWidgetArea(w.dock(MainWindow::ImagePlaybackDock)), Qt::BottomDockWidgetArea);
        QCOMPARE(w.tabifiedDockWidgets(w.dock(MainWindow::TextOverlayDock)).size(), 2);
    }
};

int main(int argc, char *argv[])
{
    // Settings and the output folder live in a private home for the whole run.
    static IsolatedHome home;
    qputenv("XDG_CONFIG_HOME", home.path("config").toUtf8());
    qputenv("XDG_DATA_HOME", home.path("data").toUtf8());
    qputenv("XDG_RUNTIME_DIR", home.path("run").toUtf8());
    qputenv("HOME", home.path().toUtf8());
    QApplication app(argc, argv);
    QCoreApplication::setApplicationName("Selvane");
    TestMainWindow test;
    return QTest::qExec(&test, argc, argv);
}

#include "test_mainwindow.moc"
