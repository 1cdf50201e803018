// The compositor on real frames: boxing of media overlays, opacity clamping, text effects at
// scaled positions with the doodle on top, scrolling at known times, pass-through, an exhausted
// pool, no OpenGL without a display, and the OpenGL read-back path against the CPU path (in a
// child process on its own Xvfb).

#include "TestSupport.h"
#include "compose/OverlayManager.h"
#include "compose/TextOverlayData.h"
#include "compose/VulkanCompositor.h"

#include <QFile>
#include <QFontMetricsF>
#include <QGuiApplication>
#include <QProcess>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QtTest>
#include <cmath>

namespace {

constexpr const char *kGpuVariable = "SELVANE_ENABLE_GL_READBACK_COMPOSITOR";
// Set for the child processes of the OpenGL tests.
constexpr const char *kChildVariable = "SELVANE_TEST_COMPOSITOR_CHILD";

const QColor kBase(40, 50, 60);
const QColor kRed(255, 0, 0), kGreen(0, 255, 0), kBlue(0, 0, 255), kYellow(255, 255, 0);
const QColor kMagenta(255, 0, 255);

FrameTokenPtr baseFrame(FramePool &pool, int width, int height, qint64 ptsUs = 1234,
                        QColor color = kBase)
{
    FrameWriter token = pool.acquire();
    token.prepare(width, height, qint64(width) * 4);
    QImage(token.bits(), width, height, token->stride, QImage::Format_RGBA8888).fill(color);
    token->ptsUs = ptsUs;
    return std::move(token).publish();
}

QImage viewOf(const FrameTokenPtr &token)
{
    return QImage(token->bits(), token->width, token->height, token->stride,
                  QImage::Format_RGBA8888);
}

QColor pixel(const FrameTokenPtr &token, int x, int y)
{
    return viewOf(token).pixelColor(x, y);
}

// Antialiased edges blend neighbours; a pixel counts as a colour when every channel is close.
bool near(QColor c, QColor target)
{
    return std::abs(c.red() - target.red()) < 75 && std::abs(c.green() - target.green()) < 75 &&
           std::abs(c.blue() - target.blue()) < 75;
}

QRect boundsOf(const QImage &image, QColor target)
{
    QRect box;
    for (int y = 0; y < image.height(); ++y)
        for (int x = 0; x < image.width(); ++x)
            if (near(image.pixelColor(x, y), target))
                box |= QRect(x, y, 1, 1);
    return box;
}

// A 100 x 100 picture, left half red, right half blue: shows placement and orientation at once.
void addImageOverlay(OverlayManager &overlays, const QTemporaryDir &dir, int id, QRectF rect,
                     double opacity = 1.0)
{
    QImage image(100, 100, QImage::Format_RGB32);
    image.fill(kRed);
    for (int y = 0; y < 100; ++y)
        for (int x = 50; x < 100; ++x)
            image.setPixelColor(x, y, kBlue);
    const QString path = dir.filePath(QStringLiteral("overlay%1.png").arg(id));
    QVERIFY(image.save(path));
    overlays.setMediaOverlay(MediaOverlayRecord{id, 0, path, rect, true, opacity});
    QTRY_VERIFY(!overlays.overlayImage(id).isNull());
}

double psnr(const FrameTokenPtr &a, const FrameTokenPtr &b)
{
    const QImage ia = viewOf(a);
    const QImage ib = viewOf(b);
    double squared = 0;
    for (int y = 0; y < ia.height(); ++y)
        for (int x = 0; x < ia.width(); ++x) {
            const QColor ca = ia.pixelColor(x, y), cb = ib.pixelColor(x, y);
            for (int d : {ca.red() - cb.red(), ca.green() - cb.green(), ca.blue() - cb.blue()})
                squared += double(d) * d;
        }
    const double mse = squared / (double(ia.width()) * ia.height() * 3);
    return mse == 0 ? 99.0 : 10 * std::log10(255.0 * 255.0 / mse);
}

// Three overlays of all three kinds: an image, a half-transparent video picture, a styled text.
void addHeavyOverlays(OverlayManager &overlays, VulkanCompositor &compositor, FramePool &pool,
                      const QTemporaryDir &dir)
{
    addImageOverlay(overlays, dir, 1, {40, 40, 200, 100});
    overlays.setMediaOverlay(MediaOverlayRecord{2, 1, "clip.mp4", {400, 200, 160, 90}, true, 0.6});
    compositor.setVideoPicture(2, baseFrame(pool, 320, 180, 0, QColor(0, 200, 100)));
    TextOverlayData title;
    title.id = 1;
    title.text = QStringLiteral("Program");
    title.posX = 0.1;
    title.posY = 0.6;
    title.backgroundEnabled = title.shadow = true;
    overlays.setTextOverlay(title);
}

} // namespace

// Runs only in the child processes, in the environment the parent prepared.
class CompositorGlChild : public QObject
{
    Q_OBJECT

private slots:
    void gpuMatchesCpu()
    {
        QTemporaryDir dir;
        FramePool basePool(4, 1920, 1080);
        VulkanCompositor compositor(FramePool(6, 1920, 1080));
        QVERIFY(compositor.isGpuReady());
        OverlayManager overlays;
        addHeavyOverlays(overlays, compositor, basePool, dir);
        QCOMPARE(compositor.overlayCount(*overlays.scene()), 3);
        for (QSize size : {QSize(1280, 720), QSize(1920, 1080)}) {
            const FrameTokenPtr base = baseFrame(basePool, size.width(), size.height(), 777);
            qputenv(kGpuVariable, "1");
            const FrameTokenPtr gpu = compositor.compose(base, overlays.scene().get());
            QCOMPARE(compositor.lastPath(), VulkanCompositor::Path::Gpu);
            qputenv(kGpuVariable, "0");
            const FrameTokenPtr cpu = compositor.compose(base, overlays.scene().get());
            QCOMPARE(compositor.lastPath(), VulkanCompositor::Path::Cpu);
            QCOMPARE(gpu->ptsUs, qint64(777));
            QCOMPARE(QSize(gpu->width, gpu->height), size);
            // The red half of the image where the CPU puts it: the read-back is upright.
            const double f = size.height() / 360.0;
            QCOMPARE(pixel(gpu, int(100 * f), int(60 * f)), kRed);
            const double db = psnr(gpu, cpu);
            qInfo("PSNR GPU vs CPU at %dx%d: %.2f dB", size.width(), size.height(), db);
            QVERIFY2(db > 35.0, qPrintable(QString::number(db)));
        }
        // Two overlays do not pay for the read-back.
        qputenv(kGpuVariable, "1");
        overlays.removeTextOverlay(1);
        QVERIFY(compositor.compose(baseFrame(basePool, 1280, 720), overlays.scene().get()));
        QCOMPARE(compositor.lastPath(), VulkanCompositor::Path::Cpu);
    }
};

class TestCompositor : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { qunsetenv(kGpuVariable); }

    void passThroughAndExhaustedPool()
    {
        FramePool basePool(2, 640, 360);
        FramePool programPool(1, 640, 360); // at most 3 tokens in flight
        VulkanCompositor compositor(programPool);
        OverlayManager overlays;
        const FrameTokenPtr base = baseFrame(basePool, 640, 360, 99);
        QCOMPARE(compositor.compose(base, overlays.scene().get()), base); // nothing to draw: no copy at all
        QCOMPARE(compositor.lastPath(), VulkanCompositor::Path::PassThrough);
        QCOMPARE(programPool.inUse(), 0);
        QCOMPARE(compositor.compose(base, nullptr), base);
        // Hidden, disabled, empty and picture-less overlays draw nothing: still no copy.
        TextOverlayData disabled;
        disabled.id = 1;
        disabled.text = QStringLiteral("off");
        disabled.enabled = false;
        overlays.setTextOverlay(disabled);
        overlays.setMediaOverlay(MediaOverlayRecord{5, 1, "v.mp4", {0, 0, 9, 9}, false, 1.0});
        compositor.setVideoPicture(5, baseFrame(basePool, 8, 8));
        overlays.setMediaOverlay(MediaOverlayRecord{6, 1, "w.mp4", {0, 0, 9, 9}, true, 1.0});
        QCOMPARE(compositor.compose(base, overlays.scene().get()), base);
        compositor.setVideoPicture(5, nullptr);

        overlays.setDoodleLayer({DoodleStroke{kMagenta, 6, {{0, 10}, {640, 10}}}});
        std::vector<FrameWriter> held;
        for (int i = 0; i < 3; ++i)
            held.push_back(programPool.acquire());
        QCOMPARE(compositor.compose(base, overlays.scene().get()), base); // the base rather than no frame
        held.pop_back();
        const FrameTokenPtr program = compositor.compose(base, overlays.scene().get());
        QVERIFY(program != base);
        QCOMPARE(program->ptsUs, qint64(99));
        QCOMPARE(pixel(program, 320, 10), kMagenta);
        QCOMPARE(pixel(program, 320, 200), kBase);
        QCOMPARE(pixel(base, 320, 10), kBase); // the base frame is never written
    }

    void imageOverlaysBoxedAtEveryResolution()
    {
        qputenv(kGpuVariable, "1"); // asked for, but main() left no display: no OpenGL here
        for (int f : {2, 3}) {      // output pixels a scene unit: 720p and 1080p
            QTemporaryDir dir;
            FramePool basePool(2, 640 * f, 360 * f);
            QTest::ignoreMessage(QtWarningMsg, "VulkanCompositor: QOpenGLContext::create failed, "
                                               "using CPU composition");
            VulkanCompositor compositor(FramePool(4, 640 * f, 360 * f));
            QVERIFY(!compositor.isGpuReady());
            OverlayManager overlays;
            // Square pictures: pillar-boxed in a wide rectangle (x 90..190 of 40..240),
            // letter-boxed in a tall one (y 70..170 of 20..220); opacity 1.7 is opaque, -0.3
            // invisible.
            addImageOverlay(overlays, dir, 1, {40, 40, 200, 100});
            addImageOverlay(overlays, dir, 2, {300, 20, 100, 200});
            addImageOverlay(overlays, dir, 3, {450, 20, 50, 50}, 1.7);
            addImageOverlay(overlays, dir, 4, {450, 100, 50, 50}, -0.3);
            const FrameTokenPtr out =
                compositor.compose(baseFrame(basePool, 640 * f, 360 * f), overlays.scene().get());
            const struct
            {
                double x, y;
                QColor expected;
            } probes[] = {
                {89.5, 90, kBase},   {90.2, 90, kRed},    {139.8, 90, kRed},   {140.2, 90, kBlue},
                {190.2, 90, kBase},  {90.2, 39.5, kBase}, {90.2, 139.8, kRed}, {90.2, 140.2, kBase},
                {310, 69.5, kBase},  {310, 70.2, kRed},   {310, 169.8, kRed},  {310, 170.2, kBase},
                {399.8, 120, kBlue}, {460, 40, kRed},     {490, 40, kBlue},    {460, 120, kBase},
            };
            QCOMPARE(compositor.lastPath(), VulkanCompositor::Path::Cpu); // with 4 overlays
            for (const auto &probe : probes)
                QVERIFY2(
                    pixel(out, int(probe.x * f), int(probe.y * f)) == probe.expected,
                    qPrintable(
                        QStringLiteral("scene %1,%2 at %3x").arg(probe.x).arg(probe.y).arg(f)));
        }
        qunsetenv(kGpuVariable);
    }

    void textEffectsAtScaledPositions()
    {
        TextOverlayData data;
        data.id = 1;
        data.text = QStringLiteral("HEH");
        data.fontColor = kGreen;
        data.posX = 100 / 640.0;
        data.posY = 60 / 360.0;
        data.backgroundEnabled = data.shadow = data.outline = true;
        data.backgroundColor = kYellow;
        data.backgroundPadding = 10;
        data.shadowColor = kBlue;
        data.shadowOffsetX = 6;
        data.shadowOffsetY = 5;
        data.outlineColor = kRed;
        data.outlineWidth = 2; // 1 scene unit outside the letters
        for (int f : {2, 3}) {
            FramePool basePool(2, 640 * f, 360 * f);
            VulkanCompositor compositor(FramePool(4, 640 * f, 360 * f));
            OverlayManager overlays;
            overlays.setTextOverlay(data);
            // The doodle is the top layer: a stroke through the box's top padding (y 52..54).
            overlays.setDoodleLayer({DoodleStroke{kMagenta, 2, {{0, 53}, {640, 53}}}});
            const QImage image =
                viewOf(compositor.compose(baseFrame(basePool, 640 * f, 360 * f), overlays.scene().get()));
            const QRect box = boundsOf(image, kYellow), letters = boundsOf(image, kGreen);
            const QRect shadow = boundsOf(image, kBlue), outline = boundsOf(image, kRed);
            QVERIFY(!letters.isEmpty() && !shadow.isEmpty() && !outline.isEmpty());
            // The box starts one padding before the anchor and holds the letters and effects;
            // the letters start at the anchor, give or take a glyph's bearing.
            QCOMPARE(box.topLeft(), QPoint(90 * f, 50 * f));
            QCOMPARE(image.pixelColor(120 * f, 53 * f), kMagenta);
            QVERIFY(box.contains(letters) && box.contains(outline) && box.contains(shadow));
            QVERIFY(std::abs(letters.left() - 100 * f) <= 4 * f && letters.top() > 60 * f);
            QVERIFY(std::abs(shadow.right() - letters.right() - 6 * f) <= 2);
            QVERIFY(std::abs(shadow.bottom() - letters.bottom() - 5 * f) <= 2);
            QVERIFY(std::abs(letters.left() - outline.left() - f) <= 2);
            QVERIFY(std::abs(outline.right() - letters.right() - f) <= 2);
        }
    }

    void scrollingTextAtKnownTimes_data()
    {
        QTest::addColumn<int>("direction");
        QTest::newRow("right to left") << int(TextOverlayData::ScrollRightToLeft);
        QTest::newRow("left to right") << int(TextOverlayData::ScrollLeftToRight);
    }

    void scrollingTextAtKnownTimes()
    {
        QFETCH(int, direction);
        TextOverlayData data;
        data.id = 1;
        data.text = QStringLiteral("IIII");
        data.fontColor = kGreen;
        data.posX = 0;
        data.posY = 100 / 360.0;
        data.scrollable = true;
        data.scrollDirection = direction;
        data.scrollStep = 5; // 100 px/s
        data.scrollTimes = 2;
        qint64 nowUs = 0;
        OverlayManager overlays;
        overlays.setClock([&] { return nowUs; });
        overlays.setTextOverlay(data);
        FramePool basePool(2, 1280, 720);
        VulkanCompositor compositor(FramePool(4, 1280, 720));
        const FrameTokenPtr base = baseFrame(basePool, 1280, 720);

        // One pass: the text's advance plus the visible width (here the whole output width).
        QFont font(data.fontFamily);
        font.setPointSizeF(data.fontPointSize * 2.0);
        const QImage device(8, 8, QImage::Format_RGBA8888);
        const double pass = QFontMetricsF(font, &device).horizontalAdvance(data.text) + 1280;
        const auto lettersAt = [&](double distancePx) {
            nowUs = qint64(distancePx / 100.0 * 1e6);
            return boundsOf(viewOf(compositor.compose(base, overlays.scene().get())), kGreen);
        };
        // The leading edge after 60 px (entering, in both passes) and after 640 px (mid-pass).
        for (double distance : {60.0, pass + 60.0, 640.0}) {
            const QRect letters = lettersAt(distance);
            const double lead = std::fmod(distance, pass);
            if (direction == TextOverlayData::ScrollRightToLeft)
                QVERIFY(letters.left() >= 1280 - lead && letters.left() <= 1280 - lead + 12);
            else
                QVERIFY(letters.right() <= lead && letters.right() >= lead - 12);
            QVERIFY(letters.top() >= 200); // below its anchor row
        }
        // After the last of its two passes it stays off-screen, also where a third pass would
        // show it.
        QVERIFY(!lettersAt(1.5 * pass).isEmpty());
        QVERIFY(lettersAt(2 * pass + 1).isEmpty());
        QVERIFY(lettersAt(2.5 * pass).isEmpty());
        QVERIFY(lettersAt(50.5 * pass).isEmpty());
    }

    void gpuPathMatchesCpuPath()
    {
        if (QStandardPaths::findExecutable("xvfb-run").isEmpty())
            QSKIP("xvfb-run is not installed");
        // The same executable runs its OpenGL checks as a child on a virtual display.
        QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
        env.insert(kChildVariable, "1");
        env.insert(kGpuVariable, "1");
        // Under the address checker, slow unwinding on every allocation makes Mesa's shader
        // compiler crawl, and its leaks are not ours: the child checks our memory use only.
        if (env.contains("ASAN_OPTIONS"))
            env.insert("ASAN_OPTIONS", "detect_leaks=0");
        QProcess child;
        child.setProcessEnvironment(env);
        child.setProcessChannelMode(QProcess::MergedChannels);
        child.start("xvfb-run", {"-a", "-s", "-screen 0 1280x720x24",
                                 QCoreApplication::applicationFilePath(), "gpuMatchesCpu"});
        QVERIFY(child.waitForFinished(90000));
        const QByteArray output = child.readAll();
        for (const QByteArray &line : output.split('\n'))
            qInfo().noquote() << "child:" << line;
        QCOMPARE(child.exitCode(), 0);
        QVERIFY(output.contains("OpenGL offscreen GPU path ready"));
        QVERIFY(output.contains("PSNR GPU vs CPU at 1920x1080"));
    }
};

int main(int argc, char **argv)
{
    if (!qEnvironmentVariableIsSet(kChildVariable))
        qunsetenv("DISPLAY");
    QGuiApplication app(argc, argv);
    if (qEnvironmentVariableIsSet(kChildVariable)) {
        CompositorGlChild child;
        return QTest::qExec(&child, argc, argv);
    }
    TestCompositor test;
    return QTest::qExec(&test, argc, argv);
}

#include "test_compositor.moc"
