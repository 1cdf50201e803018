// The compositor on real frames: boxing of media overlays, opacity clamping, overlay videos,
// text effects at scaled positions with the doodle on top, scrolling at known times (a line far
// wider than any tile too), pass-through and an exhausted pool.

#include "TestSupport.h"
#include "compose/BlendRows.h"
#include "compose/OverlayManager.h"
#include "compose/TextOverlayData.h"
#include "compose/VulkanCompositor.h"
#include "compose/YuvLayer.h"
#include "media/FrameConvert.h"

#include <QFontMetricsF>
#include <QGuiApplication>
#include <QTemporaryDir>
#include <QtTest>
#include <cmath>
#include <random>
#include <vector>

namespace {

const QColor kBase(40, 50, 60);
const QColor kRed(255, 0, 0), kGreen(0, 255, 0), kBlue(0, 0, 255), kYellow(255, 255, 0);
const QColor kMagenta(255, 0, 255);

FrameTokenPtr baseFrame(FramePool &pool, int width, int height, qint64 ptsUs = 1234,
                        QColor color = kBase)
{
    FrameWriter token = pool.acquire();
    QImage picture(width, height, QImage::Format_RGBA8888);
    picture.fill(color);
    selvane::imageToFrame(picture, token);
    token->ptsUs = ptsUs;
    return std::move(token).publish();
}

QImage viewOf(const FrameTokenPtr &token)
{
    return selvane::frameToImage(*token);
}

QColor pixel(const FrameTokenPtr &token, int x, int y)
{
    return viewOf(token).pixelColor(x, y);
}

// The same colour after a trip through YUV.
bool same(QColor c, QColor target)
{
    return std::abs(c.red() - target.red()) <= 12 && std::abs(c.green() - target.green()) <= 12 &&
           std::abs(c.blue() - target.blue()) <= 12;
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

} // namespace

class TestCompositor : public QObject
{
    Q_OBJECT

private slots:
    // The vector and the one-pixel paths must give the same bytes as the formula, at every
    // length (the tails), at odd addresses and for every alpha, opaque and clear included.
    void blendKernelsMatchTheFormula()
    {
        std::mt19937 random(7);
        auto byte = [&] {
            return std::uint8_t(random() & 0xff);
        };
        auto rounded = [](unsigned x) {
            return unsigned(std::lround(x / 255.0));
        };
        std::vector<std::uint8_t> dst(96), src(96), alpha(96), before;
        const selvane::blend::Path widest = selvane::blend::path();
        for (int round = 0; round < 1200; ++round) {
            // Every way the processor has, the widest first.
            selvane::blend::narrowTo(selvane::blend::Path(std::max(0, int(widest) - round / 400)));
            const int n = round % 80, at = round % 13;
            const bool plain = round % 3 == 0; // long clear or opaque stretches
            for (int i = 0; i < 96; ++i) {
                dst[i] = byte();
                alpha[i] = plain        ? (round % 2 ? 255 : 0)
                           : i % 7 == 0 ? 0
                           : i % 5 == 0 ? 255
                                        : byte();
                src[i] = std::uint8_t(rounded(unsigned(byte()) * alpha[i])); // premultiplied
            }
            const std::uint8_t a = std::uint8_t(round * 37 % 256),
                               value = std::uint8_t(rounded(unsigned(byte()) * a));
            before = dst;
            selvane::blend::over(dst.data() + at, src.data() + at, alpha.data() + at, n);
            for (int i = 0; i < 96; ++i) {
                const bool in = i >= at && i < at + n;
                const unsigned want =
                    in ? src[i] + rounded(unsigned(before[i]) * (255u - alpha[i])) : before[i];
                QCOMPARE(unsigned(dst[i]), want);
            }
            before = dst;
            selvane::blend::overConstant(dst.data() + at, value, a, n);
            for (int i = 0; i < 96; ++i) {
                const bool in = i >= at && i < at + n;
                QCOMPARE(unsigned(dst[i]),
                         in ? value + rounded(unsigned(before[i]) * (255u - a)) : before[i]);
            }
            before = dst;
            selvane::blend::mix(dst.data() + at, src.data() + at, a, n);
            for (int i = 0; i < 96; ++i) {
                const bool in = i >= at && i < at + n;
                QCOMPARE(unsigned(dst[i]),
                         in ? rounded(unsigned(src[i]) * a + unsigned(before[i]) * (255u - a))
                            : before[i]);
            }
        }
        selvane::blend::narrowTo(widest);
    }

    // Frames are made in bands of rows: every blend split at even rows must give the same bytes
    // as the blend of the whole, at odd places and sizes, chroma included.
    void blendsSplitIntoBandsGiveTheWhole()
    {
        std::mt19937 random(11);
        QImage art(37, 23, QImage::Format_ARGB32_Premultiplied);
        for (int y = 0; y < art.height(); ++y)
            for (int x = 0; x < art.width(); ++x)
                art.setPixelColor(
                    x, y, QColor(random() % 256, random() % 256, random() % 256, random() % 256));
        const selvane::YuvLayer layer(art);
        FramePool pool(2, 0, 0);
        FrameWriter picture = pool.acquire();
        picture.prepareI420(18, 14);
        for (qsizetype i = 0; i < picture->pixels.size(); ++i)
            picture->pixels[i] = char(random());
        const FrameTokenPtr shown = std::move(picture).publish();
        auto draw = [&](const selvane::YuvPlanes &frame, QRect clip) {
            layer.blendInto(frame, QPoint(5, 7), clip);
            selvane::YuvLayer::fillRect(frame, QRect(3, 9, 21, 17), QColor(200, 30, 90, 140), 0.8,
                                        clip);
            selvane::YuvLayer::blendPicture(frame, *shown, QPoint(11, 3), 0.6, clip);
        };
        std::vector<std::uint8_t> whole, banded;
        for (std::vector<std::uint8_t> *target : {&whole, &banded}) {
            FrameWriter out = pool.acquire();
            out.prepareI420(48, 34);
            for (qsizetype i = 0; i < out->pixels.size(); ++i)
                out->pixels[i] = char(i * 7 % 251);
            selvane::YuvPlanes frame;
            for (int p = 0; p < 3; ++p) {
                frame.data[p] = out.plane(p);
                frame.stride[p] = out->planeStride(p);
            }
            frame.width = 48;
            frame.height = 34;
            if (target == &whole)
                draw(frame, QRect(0, 0, 48, 34));
            else
                for (int top = 0; top < 34; top += 6)
                    draw(frame, QRect(0, top, 48, 6));
            target->assign(out.bits(), out.bits() + out->pixels.size());
        }
        QVERIFY(whole == banded);
    }

    void passThroughAndExhaustedPool()
    {
        FramePool basePool(2, 640, 360);
        FramePool programPool(1, 640, 360); // at most 3 tokens in flight
        VulkanCompositor compositor(programPool);
        OverlayManager overlays;
        const FrameTokenPtr base = baseFrame(basePool, 640, 360, 99);
        QCOMPARE(compositor.compose(base, overlays.scene().get()),
                 base); // nothing to draw: no copy at all
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
        QCOMPARE(compositor.compose(base, overlays.scene().get()),
                 base); // the base rather than no frame
        held.pop_back();
        const FrameTokenPtr program = compositor.compose(base, overlays.scene().get());
        QVERIFY(program != base);
        QCOMPARE(program->ptsUs, qint64(99));
        QVERIFY(same(pixel(program, 320, 10), kMagenta));
        QVERIFY(same(pixel(program, 320, 200), kBase));
        QVERIFY(same(pixel(base, 320, 10), kBase)); // the base frame is never written
    }

    void imageOverlaysBoxedAtEveryResolution()
    {
        for (int f : {2, 3}) { // output pixels a scene unit: 720p and 1080p
            QTemporaryDir dir;
            FramePool basePool(2, 640 * f, 360 * f);
            VulkanCompositor compositor(FramePool(4, 640 * f, 360 * f));
            OverlayManager overlays;
            // Square pictures: pillar-boxed in a wide rectangle (x 90..190 of 40..240),
            // letter-boxed in a tall one (y 70..170 of 20..220); opacity 1.7 is opaque, -0.3
            // invisible. Probes stay a scene unit off the edges, which scaling and shared
            // chroma soften.
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
                {89, 90, kBase},   {91, 90, kRed},  {138, 90, kRed},  {142, 90, kBlue},
                {191, 90, kBase},  {91, 39, kBase}, {91, 139, kRed},  {91, 141, kBase},
                {310, 69, kBase},  {310, 71, kRed}, {310, 169, kRed}, {310, 171, kBase},
                {399, 120, kBlue}, {460, 40, kRed}, {490, 40, kBlue}, {460, 120, kBase},
            };
            for (const auto &probe : probes)
                QVERIFY2(
                    same(pixel(out, int(probe.x * f), int(probe.y * f)), probe.expected),
                    qPrintable(
                        QStringLiteral("scene %1,%2 at %3x").arg(probe.x).arg(probe.y).arg(f)));
        }
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
            const QImage image = viewOf(
                compositor.compose(baseFrame(basePool, 640 * f, 360 * f), overlays.scene().get()));
            const QRect box = boundsOf(image, kYellow);
            // Inside the box, below the stroke: colours mixed at their edges are left out.
            const QRect inner = box.adjusted(2, 57 * f - box.top(), -2, -2);
            const QImage part = image.copy(inner);
            const QRect letters = boundsOf(part, kGreen).translated(inner.topLeft());
            const QRect shadow = boundsOf(part, kBlue).translated(inner.topLeft());
            const QRect outline = boundsOf(part, kRed).translated(inner.topLeft());
            QVERIFY(!letters.isEmpty() && !shadow.isEmpty() && !outline.isEmpty());
            // The box starts one padding before the anchor and holds the letters and effects;
            // the letters start at the anchor, give or take a glyph's bearing.
            QVERIFY((box.topLeft() - QPoint(90 * f, 50 * f)).manhattanLength() <= 1);
            QVERIFY(same(image.pixelColor(120 * f, 53 * f), kMagenta));
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

    void overlayVideoAndLongTicker()
    {
        FramePool basePool(4, 1280, 720);
        VulkanCompositor compositor(FramePool(4, 1280, 720));
        OverlayManager overlays;
        qint64 nowUs = 0;
        overlays.setClock([&] { return nowUs; });
        // A 320 x 180 picture in the scene rectangle 400,200 160x90 (800..1120 x 400..580 here),
        // 60 % over the base.
        overlays.setMediaOverlay(MediaOverlayRecord{
            2, MediaOverlayRecord::OverlayVideo, "clip.mp4", {400, 200, 160, 90}, true, 0.6});
        const QColor green(0, 200, 100);
        compositor.setVideoPicture(2, baseFrame(basePool, 320, 180, 0, green));
        // The longest line a text may hold, hundreds of tiles wide, at 1000 pixels a second.
        TextOverlayData ticker;
        ticker.id = 1;
        ticker.text = QString(TextOverlayData::kMaxTextLength, QLatin1Char('W'));
        ticker.fontColor = kYellow;
        ticker.posX = 0;
        ticker.posY = 0.1;
        ticker.scrollable = true;
        ticker.scrollDirection = TextOverlayData::ScrollRightToLeft;
        ticker.scrollStep = 50;
        overlays.setTextOverlay(ticker);
        const FrameTokenPtr base = baseFrame(basePool, 1280, 720);
        const QColor mixed(int(0.6 * green.red() + 0.4 * kBase.red()),
                           int(0.6 * green.green() + 0.4 * kBase.green()),
                           int(0.6 * green.blue() + 0.4 * kBase.blue()));
        for (qint64 ms : {500, 30000, 300000, 300040}) {
            nowUs = ms * 1000;
            const QImage image = viewOf(compositor.compose(base, overlays.scene().get()));
            QVERIFY(same(image.pixelColor(960, 490), mixed));
            QVERIFY(same(image.pixelColor(1130, 490), kBase));
            const QRect letters = boundsOf(image, kYellow);
            if (ms == 500) // the first letters 500 px in from the right edge
                QVERIFY(letters.left() >= 780 && letters.left() <= 800);
            else // the middle of the line fills the whole width
                QVERIFY(letters.left() <= 80 && letters.right() >= 1200);
            QVERIFY(letters.top() >= 72 && letters.bottom() < 400);
        }
    }
};

int main(int argc, char **argv)
{
    qunsetenv("DISPLAY");
    QGuiApplication app(argc, argv);
    TestCompositor test;
    return QTest::qExec(&test, argc, argv);
}

#include "test_compositor.moc"
