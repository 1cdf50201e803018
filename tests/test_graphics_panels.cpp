// The graphics an operator lays over the program from the window, checked in real recordings:
// an image overlay dragged and resized by its frame on the program preview is found at its new
// place; a stroke drawn with the pen is in the recording and in the exported PNG, and the
// eraser and undo take it away and bring it back; slides from a folder play as the program and
// Stop goes back to the channel.

#include "GuiSupport.h"
#include "app/MainWindow.h"
#include "engine/Engine.h"
#include "panels/DrawingToolBar.h"
#include "panels/ImagePlaybackPanel.h"
#include "panels/MediaOverlayPanel.h"
#include "panels/OutputSettingsPanel.h"
#include "panels/PreviewCanvas.h"
#include "panels/ProgramPreview.h"

#include <QApplication>
#include <QDockWidget>
#include <QDoubleSpinBox>
#include <QMenuBar>
#include <QPushButton>
#include <QtTest>

using namespace testsupport;
using namespace selvane;

namespace {

const QString kGrey =
    "lavfi://color=c=0x505050:size=640x360:rate=30[out0];anullsrc=r=48000:cl=stereo[out1]";

bool near(const QColor &c, int r, int g, int b, int tolerance = 45)
{
    return qAbs(c.red() - r) < tolerance && qAbs(c.green() - g) < tolerance &&
           qAbs(c.blue() - b) < tolerance;
}

QString solidPng(const QString &path, const QColor &colour, QSize size = {64, 36})
{
    QImage image(size, QImage::Format_RGB32);
    image.fill(colour);
    image.save(path);
    return path;
}

// Drags with the left button from `from` to `to` in a few steps, as a hand does.
void drag(QWidget *widget, QPoint from, QPoint to)
{
    QTest::mousePress(widget, Qt::LeftButton, {}, from);
    for (int step = 1; step <= 8; ++step)
        QTest::mouseMove(widget, from + (to - from) * step / 8, 10);
    QTest::mouseRelease(widget, Qt::LeftButton, {}, to);
}

} // namespace

class TestGraphicsPanels : public QObject
{
    Q_OBJECT

    QTemporaryDir m_dir;
    QString path(const QString &name) const { return QDir(m_dir.path()).filePath(name); }

    // Channel 1 grey on air, the window shown at a size where the preview is large.
    void startShow(MainWindow &w)
    {
        w.setWindowState(Qt::WindowNoState);
        w.resize(1600, 900);
        w.show();
        QVERIFY(QTest::qWaitForWindowExposed(&w));
        w.engine()->setChannelSource(0, kGrey);
        w.take(0);
        QTRY_VERIFY_WITH_TIMEOUT(w.programPreview()->hasSignal(), 10000);
    }

    // Records `seconds` of the program to `file` (640x360).
    void record(MainWindow &w, const QString &file, int ms)
    {
        w.outputPanel()->setRecording(true, file);
        w.outputPanel()->setTargets({});
        QVERIFY(w.startOutputs());
        QTRY_VERIFY_WITH_TIMEOUT(w.engine()->stats().output.running, 10000);
        QTest::qWait(ms);
        QSignalSpy stopped(w.engine(), &Engine::outputsStopped);
        w.stopOutputs();
        QVERIFY(stopped.wait(15000));
    }

private slots:
    void draggedOverlayFrameIsWhereTheRecordingShowsIt()
    {
        MainWindow w;
        startShow(w);
        w.dock(MainWindow::VideoOverlayDock)->raise();
        MediaOverlayPanel *panel = w.mediaOverlayPanel();
        const int id = panel->addOverlay(MediaOverlayRecord::StillImage,
                                         solidPng(path("green.png"), Qt::green));
        QVERIFY(id > 0);
        PreviewCanvas *canvas = w.previewCanvas();
        QTRY_COMPARE(canvas->mode(), PreviewCanvas::Mode::Frames);
        const QRectF before = w.engine()->mediaOverlays().first().rect;

        // Move it from the top right towards the bottom left, then pull its bottom-right corner.
        const QPoint centre = canvas->toWidget(before).center().toPoint();
        const QPoint target = canvas->toWidget(QPointF(160, 200)).toPoint();
        drag(canvas, centre, target);
        const QRectF moved = w.engine()->mediaOverlays().first().rect;
        QVERIFY2(qAbs(moved.center().x() - 160) < 4 && qAbs(moved.center().y() - 200) < 4,
                 qPrintable(QString("%1,%2").arg(moved.center().x()).arg(moved.center().y())));
        QCOMPARE(moved.size(), before.size()); // a move keeps the size
        const QPoint corner = canvas->toWidget(moved.bottomRight()).toPoint();
        drag(canvas, corner, canvas->toWidget(moved.bottomRight() + QPointF(64, 36)).toPoint());
        const QRectF resized = w.engine()->mediaOverlays().first().rect;
        QVERIFY(qAbs(resized.width() - (moved.width() + 64)) < 4);
        QVERIFY(qAbs(resized.topLeft().x() - moved.topLeft().x()) < 0.01);

        const QString file = path("overlay.mp4");
        record(w, file, 1500);
        const QImage frame = frameAt(file, 1.0, path("overlay.png"));
        QCOMPARE(frame.size(), QSize(640, 360));
        // The picture keeps its 16:9 inside the rectangle; its middle is green, the old place
        // grey.
        const QPoint now = resized.center().toPoint();
        QVERIFY2(near(frame.pixelColor(now), 0, 255, 0), qPrintable(frame.pixelColor(now).name()));
        const QPoint old = before.center().toPoint();
        QVERIFY2(near(frame.pixelColor(old), 0x50, 0x50, 0x50),
                 qPrintable(frame.pixelColor(old).name()));
    }

    void strokeReachesRecordingAndExportAndCanBeErased()
    {
        MainWindow w;
        startShow(w);
        // View -> Drawing Tools, as the operator opens them.
        QAction *tools = nullptr;
        for (QAction *menu : w.menuBar()->actions())
            for (QAction *action : menu->menu()->actions())
                if (action->text() == "Drawing Tools")
                    tools = action;
        QVERIFY(tools && tools->isEnabled());
        tools->trigger();
        DrawingToolBar *bar = w.drawingTools();
        QVERIFY(bar->isVisible());
        QCOMPARE(bar->tool(), DrawingToolBar::Tool::Pen);
        bar->setPenColour(Qt::yellow);
        PreviewCanvas *canvas = w.previewCanvas();
        QTRY_COMPARE(canvas->mode(), PreviewCanvas::Mode::Pen);
        // A line across the middle of the picture: scene (100,180) to (540,180).
        drag(canvas, canvas->toWidget(QPointF(100, 180)).toPoint(),
             canvas->toWidget(QPointF(540, 180)).toPoint());
        QCOMPARE(w.engine()->doodle().size(), 1);

        const QString file = path("drawing.mp4");
        record(w, file, 1200);
        const QImage frame = frameAt(file, 0.8, path("drawing.png"));
        QVERIFY2(near(frame.pixelColor(320, 180), 255, 255, 0),
                 qPrintable(frame.pixelColor(320, 180).name()));
        QVERIFY(near(frame.pixelColor(320, 100), 0x50, 0x50, 0x50));

        const QString exported = path("export.png");
        QVERIFY(w.exportDrawingTo(exported));
        const QImage png(exported);
        QCOMPARE(png.size(), QSize(640, 360));
        QVERIFY(png.hasAlphaChannel());
        QCOMPARE(png.pixelColor(320, 180).rgb(), QColor(Qt::yellow).rgb());
        QCOMPARE(png.pixelColor(320, 100).alpha(), 0);

        // The eraser crossing the line takes it; undo brings it back.
        QTest::mouseClick(named<QWidget>(bar, "Eraser"), Qt::LeftButton);
        QTRY_COMPARE(canvas->mode(), PreviewCanvas::Mode::Eraser);
        drag(canvas, canvas->toWidget(QPointF(300, 150)).toPoint(),
             canvas->toWidget(QPointF(300, 210)).toPoint());
        QVERIFY(w.engine()->doodle().isEmpty());
        QTest::mouseClick(named<QWidget>(bar, "Undo"), Qt::LeftButton);
        QCOMPARE(w.engine()->doodle().size(), 1);
        // Redo takes it again, and the window's Edit menu undoes the same history.
        QTest::mouseClick(named<QWidget>(bar, "Redo"), Qt::LeftButton);
        QVERIFY(w.engine()->doodle().isEmpty());
        QAction *undo = w.drawingTools()->undoAction();
        QVERIFY(undo->associatedObjects().size() >= 2); // the tool bar and the Edit menu
        undo->trigger();
        QCOMPARE(w.engine()->doodle().size(), 1);
        // An unwritable place is refused with a box, nothing written.
        QTimer::singleShot(300, [] {
            if (QWidget *box = QApplication::activeModalWidget())
                box->close();
        });
        QVERIFY(!w.exportDrawingTo("/proc/no/such/dir/drawing.png"));
    }

    void slidesFromAFolderPlayAsTheProgram()
    {
        QDir().mkpath(path("slides"));
        solidPng(path("slides/01.png"), Qt::red, {640, 360});
        solidPng(path("slides/02.png"), Qt::blue, {640, 360});
        MainWindow w;
        startShow(w);
        ImagePlaybackPanel *panel = w.imagePlaybackPanel();
        panel->setFolder(path("slides"));
        QCOMPARE(panel->paths().size(), 2);
        named<QDoubleSpinBox>(panel, "Slide interval")->setValue(1.5);
        w.outputPanel()->setRecording(true, path("slides.mp4"));
        QVERIFY(w.startOutputs());
        QTRY_VERIFY_WITH_TIMEOUT(w.engine()->stats().output.running, 10000);
        QTest::mouseClick(named<QPushButton>(panel, "Start Slides"), Qt::LeftButton);
        QTRY_VERIFY_WITH_TIMEOUT(w.engine()->stats().program.still, 5000);
        QTest::qWait(2500);
        QTest::mouseClick(named<QPushButton>(panel, "Stop Slides"), Qt::LeftButton);
        QCOMPARE(w.engine()->programChannel(), 0);
        QTest::qWait(800);
        QSignalSpy stopped(w.engine(), &Engine::outputsStopped);
        w.stopOutputs();
        QVERIFY(stopped.wait(15000));
        // Red, then blue 1.5 s later, then the grey channel again.
        const QString file = path("slides.mp4");
        const double end = probeFile(file).duration;
        bool red = false, blue = false;
        for (double at = 0.1; at < end; at += 0.25) {
            const QColor c = frameAt(file, at, path("slide.png")).pixelColor(320, 180);
            red = red || near(c, 255, 0, 0);
            blue = blue || (red && near(c, 0, 0, 255));
        }
        QVERIFY(red && blue);
        QVERIFY(near(frameAt(file, end - 0.2, path("last.png")).pixelColor(320, 180), 0x50, 0x50,
                     0x50));
    }

    // The graphics panels and the drawing tools in both languages, switched while open; the
    // pictures stay beside the test for a person to look at.
    void panelsInBothLanguages()
    {
        MainWindow w;
        startShow(w);
        w.mediaOverlayPanel()->addOverlay(MediaOverlayRecord::StillImage,
                                          solidPng(path("logo.png"), Qt::green));
        w.imagePlaybackPanel()->setFolder(QCoreApplication::applicationDirPath());
        w.showDrawingTools(true);
        QDir().mkpath("screenshots");
        auto *startSlides = named<QPushButton>(w.imagePlaybackPanel(), "Start Slides");
        QVERIFY(startSlides);
        for (const bool chinese : {false, true}) {
            w.setLanguage(chinese);
            const QString start = chinese ? QString("开始播放图片") : QString("Start Slides");
            QTRY_COMPARE(startSlides->text(), start);
            const QString suffix = chinese ? "_zh.png" : "_en.png";
            for (auto [name, id] : {std::pair<QString, MainWindow::DockId>{
                                        "text_overlay", MainWindow::TextOverlayDock},
                                    {"video_overlay", MainWindow::VideoOverlayDock},
                                    {"image_playback", MainWindow::ImagePlaybackDock}}) {
                w.dock(id)->raise();
                QTest::qWait(100);
                QVERIFY(w.dock(id)->grab().save("screenshots/" + name + suffix));
            }
            QVERIFY(w.drawingTools()->grab().save("screenshots/drawing_tools" + suffix));
            w.dock(MainWindow::VideoOverlayDock)->raise();
            QTest::qWait(100);
            QVERIFY(w.grab().save("screenshots/window_graphics" + suffix));
        }
        w.setLanguage(false);
    }
};

SELVANE_GUI_TEST_MAIN(TestGraphicsPanels)

#include "test_graphics_panels.moc"
