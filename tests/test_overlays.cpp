// The text overlay record and its JSON object, the overlay registry (limits, image loads with
// generations, scroll clock, scenes that never change once published) and the command-line
// overlay specs.

#include "TestSupport.h"
#include "cli/OverlaySpecs.h"
#include "compose/OverlayManager.h"
#include "compose/TextOverlayData.h"

#include <QJsonDocument>
#include <QTemporaryDir>
#include <QThreadPool>
#include <QtTest>

using testsupport::WarningCapture;

namespace {

QString savedImage(const QTemporaryDir &dir, const QString &name, QColor color)
{
    QImage image(32, 16, QImage::Format_RGB32);
    image.fill(color);
    image.save(dir.filePath(name));
    return dir.filePath(name);
}

MediaOverlayRecord media(int id, int kind, const QString &path, QRectF rect = {10, 10, 100, 50})
{
    return MediaOverlayRecord{id, kind, path, rect, true, 1.0};
}

TextOverlayData text(int id, const QString &words)
{
    TextOverlayData data;
    data.id = id;
    data.text = words;
    return data;
}

// Every load started so far has posted its result; deliver those queued commits.
void finishImageLoads()
{
    QThreadPool::globalInstance()->waitForDone();
    QCoreApplication::processEvents();
}

} // namespace

class TestOverlays : public QObject
{
    Q_OBJECT

private slots:
    void textRecordJson()
    {
        // A "textData" object as an arrangement file holds it, every field away from its default.
        const QJsonObject styled = QJsonDocument::fromJson(R"({
            "enabled": false, "text": "Breaking\nnews", "fontFamily": "DejaVu Sans",
            "fontPointSize": 44, "bold": true, "italic": true, "underline": true,
            "strikeOut": true, "fontColor": {"rgba": 67174915}, "posX": 0.25, "posY": 0.75,
            "zIndex": 7, "opacity": 128, "backgroundEnabled": true,
            "backgroundColor": {"rgba": 2164195328}, "backgroundPadding": 9, "outline": true,
            "outlineColor": {"rgba": 4281611334}, "outlineWidth": 4, "shadow": true,
            "shadowColor": {"rgba": 7}, "shadowOffsetX": -3, "shadowOffsetY": 5,
            "scrollable": true, "scrollDirection": 1, "scrollStep": 17, "scrollTimes": 42,
            "scrollViewportWidth": 320.5, "scrollViewportHeight": 48})")
                                       .object();
        QCOMPARE(styled.size(), 29);
        const TextOverlayData read = TextOverlayData::fromJson(styled, 3);
        QCOMPARE(read.toJson(), styled); // every key read and written under its own name
        QCOMPARE(read.backgroundColor, QColor(255, 0, 0, 128));
        QCOMPARE(read.fontColor, QColor(1, 2, 3, 4));
        QVERIFY(read.isScrolling() && !read.isDrawable()); // disabled

        // Missing keys take the defaults of a new record.
        TextOverlayData expected;
        expected.text = QStringLiteral("hi");
        QCOMPARE(TextOverlayData::fromJson({{"text", "hi"}}, 3), expected);

        QCOMPARE(textColorFromJson(QJsonValue("green")), QColor(0, 0x80, 0)); // the SVG name
        QCOMPARE(textColorFromJson(QJsonValue("no such colour")), QColor(Qt::white));
    }

    void listLimits()
    {
        QTemporaryDir dir;
        OverlayManager overlays;
        for (int id = 0; id < 10; ++id)
            overlays.setTextOverlay(text(id, QString::number(id)));
        WarningCapture warnings;
        overlays.setTextOverlay(text(10, "eleventh"));
        QVERIFY(!overlays.textOverlay(10) && warnings.contains("max 10 text overlays"));
        overlays.setTextOverlay(text(3, "updated"));
        QCOMPARE(overlays.textOverlays().size(), 10);
        QCOMPARE(overlays.textOverlays().at(3).text, QStringLiteral("updated")); // in place

        const QString png = savedImage(dir, "a.png", Qt::red);
        for (int id = 1; id <= 4; ++id)
            overlays.setMediaOverlay(media(id, id % 2, png));
        overlays.setMediaOverlay(media(5, MediaOverlayRecord::StillImage, png));
        QCOMPARE(overlays.mediaOverlays().size(), 4);
        QSignalSpy layout(&overlays, &OverlayManager::overlayLayoutChanged);
        overlays.setMediaOverlay(media(2, 0, png, {0, 0, 64, 36}));
        QCOMPARE(layout.size(), 1); // moved: the panels redraw its frame
        finishImageLoads();
    }

    void imageLoadsCommitByGeneration()
    {
        QTemporaryDir dir;
        const QString red = savedImage(dir, "red.png", Qt::red);
        const QString blue = savedImage(dir, "blue.png", Qt::blue);
        QImage green(4, 4, QImage::Format_RGB32);
        green.fill(Qt::green);
        OverlayManager overlays;
        // Two quick path changes: only the second file reaches the cache.
        overlays.setMediaOverlay(media(1, MediaOverlayRecord::StillImage, red));
        overlays.setMediaOverlay(media(1, MediaOverlayRecord::StillImage, blue));
        QCOMPARE(overlays.imageLoadGeneration(1), 2);
        finishImageLoads();
        QCOMPARE(overlays.overlayImage(1).pixelColor(0, 0), QColor(Qt::blue));
        // A stale generation, another path or a null image are dropped; the matching commit is
        // stored and announced.
        overlays.tryCommitImageOverlayCache(1, blue, 1, green);
        overlays.tryCommitImageOverlayCache(1, red, 2, green);
        overlays.tryCommitImageOverlayCache(1, blue, 2, QImage());
        QCOMPARE(overlays.overlayImage(1).pixelColor(0, 0), QColor(Qt::blue));
        QSignalSpy changed(&overlays, &OverlayManager::overlayChanged);
        overlays.tryCommitImageOverlayCache(1, blue, 2, green);
        QCOMPARE(overlays.overlayImage(1).pixelColor(0, 0), QColor(Qt::green));
        QCOMPARE(changed.size(), 1);

        // A load for a removed overlay completes into nothing.
        overlays.setMediaOverlay(media(2, MediaOverlayRecord::StillImage, red));
        overlays.removeMediaOverlay(2);
        finishImageLoads();
        overlays.tryCommitImageOverlayCache(2, red, overlays.imageLoadGeneration(2), green);
        QVERIFY(overlays.overlayImage(2).isNull());
        // A video record has no load (generation -1): only its kind rejects the commit.
        overlays.setMediaOverlay(media(3, MediaOverlayRecord::OverlayVideo, red));
        overlays.tryCommitImageOverlayCache(3, red, -1, green);
        QVERIFY(overlays.overlayImage(3).isNull());

        QTest::ignoreMessage(QtWarningMsg, QRegularExpression("^OverlayManager: cannot load"));
        overlays.setMediaOverlay(media(1, MediaOverlayRecord::StillImage, dir.filePath("none")));
        finishImageLoads();
        QVERIFY(overlays.overlayImage(1).isNull()); // the old picture went with the old path
    }

    void scrollClockAndPublishedScenes()
    {
        qint64 nowUs = 1000;
        OverlayManager overlays;
        overlays.setClock([&] { return nowUs; });
        TextOverlayData ticker = text(4, "ticker");
        ticker.scrollable = true;
        ticker.scrollDirection = TextOverlayData::ScrollRightToLeft;
        overlays.setTextOverlay(ticker);
        nowUs += 2500000;
        QCOMPARE(overlays.textScrollElapsedUs(4), 2500000);
        ticker.fontColor = Qt::yellow; // restyling keeps the ticker where it is
        overlays.setTextOverlay(ticker);
        QCOMPARE(overlays.textScrollElapsedUs(4), 2500000);
        ticker.text = QStringLiteral("new words");
        overlays.setTextOverlay(ticker);
        nowUs += 40;
        QCOMPARE(overlays.textScrollElapsedUs(4), 40);

        // The program thread draws a scene while the window edits the next one: a published
        // scene never changes, and it keeps the clock its scroll times were taken on.
        QSignalSpy published(&overlays, &OverlayManager::sceneChanged);
        const OverlayScenePtr before = overlays.scene();
        overlays.removeTextOverlay(4);
        overlays.setDoodleLayer({DoodleStroke{Qt::red, 2, {{1, 1}, {5, 5}}}});
        QCOMPARE(published.size(), 2);
        QCOMPARE(before->texts.size(), 1);
        QVERIFY(before->doodle.isEmpty());
        QCOMPARE(before->scrollElapsedUs(4, before->nowUs()), 40);
        const OverlayScenePtr after = published.last().at(0).value<OverlayScenePtr>();
        QVERIFY(after->texts.isEmpty() && after->hasDoodle());
        QVERIFY(after->doodleVersion != before->doodleVersion);
    }

    void commandLineSpecs()
    {
        MediaOverlayRecord record;
        QString error;
        QVERIFY(selvane::parseMediaOverlaySpec(
            "/m/a@b.png@ -10, 2.5 ,64,36", MediaOverlayRecord::OverlayVideo, 7, &record, &error));
        QCOMPARE(record.filePath, QStringLiteral("/m/a@b.png")); // the last '@' separates
        QCOMPARE(record.rect, QRectF(-10, 2.5, 64, 36));
        QCOMPARE(record.kind, 1);
        QCOMPARE(record.id, 7);
        for (const char *bad : {"/m/logo.png", "@1,2,3,4", "a.png@1,two,3,4", "a.png@1,2,3",
                                "a.png@1,2,0,4", "a.png@1,2,3,-4", "a.png@inf,2,3,4"}) {
            error.clear();
            QVERIFY2(!selvane::parseMediaOverlaySpec(bad, MediaOverlayRecord::StillImage, 1,
                                                     &record, &error),
                     bad);
            QVERIFY(error.contains(QLatin1String(bad)));
        }

        TextOverlayData ticker;
        QVERIFY(!selvane::parseTextOverlaySpec("   ", 1, &ticker, &error));
        QVERIFY(selvane::parseTextOverlaySpec("Live from the hall", 2, &ticker, &error));
        QVERIFY(ticker.isDrawable() && ticker.isScrolling() && ticker.backgroundEnabled);
        QCOMPARE(ticker.scrollDirection, int(TextOverlayData::ScrollRightToLeft));
        QCOMPARE(ticker.id, 2);
        QVERIFY(ticker.posX == 0.0 && ticker.posY > 0.5 && ticker.posY < 1.0); // a bottom band
    }
};

QTEST_GUILESS_MAIN(TestOverlays)
#include "test_overlays.moc"
