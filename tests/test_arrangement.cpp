// The program arrangement file: what is rejected, how values are read (clamping, path lists,
// kinds, old pixel rectangles), export-import equality, and every validation message in order.

#include "schedule/ProgramArrangement.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>
#include <QtTest>

namespace {

QByteArray document(const QString &body, int version = 3)
{
    return QStringLiteral(R"({"format":"selvane_program_arrangement","version":%1,%2})")
        .arg(version)
        .arg(body)
        .toUtf8();
}

} // namespace

class TestArrangement : public QObject
{
    Q_OBJECT

    QTemporaryDir m_dir;
    QString file(const QString &name, bool create = true)
    {
        const QString path = QDir(m_dir.path()).filePath(name);
        if (create) {
            QFile f(path);
            f.open(QIODevice::WriteOnly);
            f.write("x");
        }
        return path;
    }

private slots:
    void rejectedDocuments_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<QString>("error");
        QTest::newRow("missing format") << QByteArray(R"({"version":3,"sceneClips":[{"id":"a"}]})")
                                        << QString::fromUtf8("不是有效的节目编排文件");
        QTest::newRow("other format") << QByteArray(R"({"format":"other","sceneClips":[]})")
                                      << QString::fromUtf8("不是有效的节目编排文件");
        QTest::newRow("array root") << QByteArray("[1,2]") << QString("the document is not an object");
        QTest::newRow("broken json") << QByteArray("{\"format\":") << QString();
    }

    void rejectedDocuments()
    {
        QFETCH(QByteArray, bytes);
        QFETCH(QString, error);
        QString got;
        const ProgramArrangement a = arrangement::fromJson(bytes, &got);
        QVERIFY(!got.isEmpty());
        if (!error.isEmpty())
            QCOMPARE(got, error);
        QCOMPARE(a, ProgramArrangement{});
        QCOMPARE(a.version, 3);
    }

    void valuesAreReadByTheRules()
    {
        QString error;
        const ProgramArrangement a = arrangement::fromJson(document(R"(
            "timelineZero":"2026-11-22 10:00:00",
            "sceneClips":[
              {"id":"hi","startMs":1500.9,"endMs":0,"kind":"channel","channel":7},
              {"id":"lo","kind":"somethingElse","channel":-2},
              {"id":"seq","kind":"imageSequence","paths":"a.png||b.png|"},
              {"id":"vid","kind":"sceneVideo","sceneVideoPath":"/v.mp4","sceneVideoLoop":true},
              "not an object"
            ],
            "overlayClips":[
              {"id":"t","overlayKind":"text"},
              {"id":"m1","mediaType":"video","overlayKind":"text"},
              {"id":"m2","mediaType":"photo"},
              {"id":"m3","mediaType":"pic","overlayKind":"video"},
              {"id":"m4","mediaType":"pictures","overlayKind":"nothing-here"},
              {"id":"m5"}
            ])"), &error);
        QVERIFY2(error.isEmpty(), qPrintable(error));
        QCOMPARE(a.timelineZero, QString("2026-11-22 10:00:00"));
        QCOMPARE(a.sceneClips.size(), 4);
        QCOMPARE(a.sceneClips[0].startMs, 1500);
        QCOMPARE(a.sceneClips[0].channel, 3);
        QCOMPARE(a.sceneClips[1].kind, int(SceneClip::Channel));
        QCOMPARE(a.sceneClips[1].channel, 0);
        QCOMPARE(a.sceneClips[1].intervalMs, 2000);
        QVERIFY(a.sceneClips[1].imageLoop);
        QCOMPARE(a.sceneClips[2].kind, int(SceneClip::ImagePlay));
        QCOMPARE(a.sceneClips[2].paths, (QStringList{"a.png", "b.png"}));
        QCOMPARE(a.sceneClips[3].kind, int(SceneClip::SceneVideo));
        QVERIFY(a.sceneClips[3].sceneVideoLoop);
        const QList<int> kinds{OverlayClip::Text,  OverlayClip::Video, OverlayClip::Image,
                               OverlayClip::Video, OverlayClip::Image, OverlayClip::Image};
        for (int i = 0; i < kinds.size(); ++i)
            QCOMPARE(a.overlayClips[i].kind, kinds[i]);
        // A text clip without words gets the default caption; defaults of a new text record.
        QCOMPARE(a.overlayClips[0].textData.text, QString::fromUtf8("字幕"));
        QCOMPARE(a.overlayClips[0].textData.fontFamily, QString("Arial"));
        QCOMPARE(a.overlayClips[0].textData.fontPointSize, 28);
        QCOMPARE(a.overlayClips[0].w, 0.5);
        QCOMPARE(a.overlayClips[0].h, 0.5);
    }

    void olderRectanglesAreConvertedFromPixels()
    {
        QString error;
        const ProgramArrangement v2 = arrangement::fromJson(
            document(R"("sceneClips":[],"overlayClips":[{"id":"a","mediaType":"image","x":960,"y":540},
                      {"id":"b","mediaType":"image","x":0,"y":0,"w":1920,"h":540}])",
                     2),
            &error);
        QCOMPARE(v2.overlayClips[0].x, 0.5);
        QCOMPARE(v2.overlayClips[0].y, 0.5);
        QCOMPARE(v2.overlayClips[0].w, 320.0 / 1920.0);
        QCOMPARE(v2.overlayClips[0].h, 180.0 / 1080.0);
        QCOMPARE(v2.overlayClips[1].w, 1.0);
        QCOMPARE(v2.overlayClips[1].h, 0.5);
        QCOMPARE(v2.version, 3);
        const ProgramArrangement v3 = arrangement::fromJson(
            document(R"("sceneClips":[],"overlayClips":[{"id":"a","mediaType":"image","x":0.25}])"),
            &error);
        QCOMPARE(v3.overlayClips[0].x, 0.25);
        QCOMPARE(v3.overlayClips[0].w, 0.5);
    }

    void imageClipsTakeTheirFolder()
    {
        QDir(m_dir.path()).mkpath("slides");
        const QString slides = QDir(m_dir.path()).filePath("slides");
        for (const char *name : {"b.jpg", "a.png", "c.webp", "notes.txt", "d.BMP"})
            QFile(QDir(slides).filePath(name)).open(QIODevice::WriteOnly);
        QString error;
        const ProgramArrangement a = arrangement::fromJson(
            document(QStringLiteral(R"("sceneClips":[{"id":"s","kind":"imagePlay","imageDirectory":"%1"}])")
                         .arg(slides)),
            &error);
        QStringList names;
        for (const QString &p : a.sceneClips[0].paths)
            names << QFileInfo(p).fileName();
        // Extensions match in any case (cameras write IMG_0001.JPG); other files are left out.
        QCOMPARE(names, (QStringList{"a.png", "b.jpg", "c.webp", "d.BMP"}));
    }

    void exportThenImportGivesEqualRecords()
    {
        ProgramArrangement a;
        a.timelineZero = "2026-11-22 08:30:00";
        SceneClip c;
        c.id = "cam";
        c.startMs = 1234;
        c.endMs = 99999;
        c.channel = 2;
        SceneClip img;
        img.id = "img";
        img.kind = SceneClip::ImagePlay;
        img.paths = QStringList{"/a b/1.png", "/c/2.jpg"};
        img.intervalMs = 3500;
        img.imageLoop = false;
        img.imageDirectory = "/a b";
        SceneClip vid;
        vid.id = "vid";
        vid.kind = SceneClip::SceneVideo;
        vid.sceneVideoPath = "/v/clip.mp4";
        vid.sceneVideoLoop = true;
        a.sceneClips = {c, img, vid};
        OverlayClip text;
        text.id = "ticker";
        text.kind = OverlayClip::Text;
        text.textData.text = "Breaking";
        text.textData.scrollable = true;
        text.textData.scrollDirection = TextOverlayData::ScrollRightToLeft;
        text.textData.fontColor = QColor(10, 20, 30, 40);
        text.x = 0.125;
        text.w = 0.75;
        OverlayClip video;
        video.id = "pip";
        video.kind = OverlayClip::Video;
        video.path = "/v/pip.mp4";
        video.opacity = 0.5;
        a.overlayClips = {text, video};
        QString error;
        const ProgramArrangement back = arrangement::fromJson(arrangement::toJson(a), &error);
        QVERIFY(error.isEmpty());
        QCOMPARE(back.sceneClips, a.sceneClips);
        // The text record's id belongs to the clip; everything else survives.
        QCOMPARE(back.overlayClips[1], a.overlayClips[1]);
        QCOMPARE(back.overlayClips[0].textData.text, a.overlayClips[0].textData.text);
        QCOMPARE(back.overlayClips[0].textData.fontColor, a.overlayClips[0].textData.fontColor);
        QCOMPARE(back, a);
        // Keys in their order, as other tools expect them.
        const QByteArray json = arrangement::toJson(a);
        QVERIFY(json.indexOf("\"id\"") < json.indexOf("\"startMs\""));
        const QJsonObject root = QJsonDocument::fromJson(json).object();
        QCOMPARE(root.value("coordinateSystem").toString(), QString("normalized"));
        QCOMPARE(root.value("canvas").toObject().value("width").toInt(), 1920);
        QCOMPARE(root.value("overlayClips").toArray()[1].toObject().value("mediaType").toString(),
                 QString("video"));
        QVERIFY(!root.value("overlayClips").toArray()[1].toObject().contains("textData"));
    }

    void validationMessagesInOrder_data()
    {
        QTest::addColumn<QString>("what");
        QTest::addColumn<QString>("title");
        QTest::addColumn<QString>("message");
        const QString invalid = "Invalid Schedule";
        const QString missing = "Missing Media";
        QTest::newRow("base id") << "base-id" << invalid << "Every base clip needs an ID.";
        QTest::newRow("base dup") << "base-dup" << invalid << "Duplicate base clip ID: a";
        QTest::newRow("base end") << "base-end" << invalid << "End time must be later than start time.";
        QTest::newRow("image dir") << "image-dir" << invalid << "Select an image directory.";
        QTest::newRow("video path") << "video-path" << invalid << "Select a video for the channel.";
        QTest::newRow("video missing") << "video-missing" << missing << "Base video was not found: %1";
        QTest::newRow("dir missing") << "dir-missing" << missing << "Image directory was not found: %1";
        QTest::newRow("overlay id") << "ov-id" << invalid << "Every overlay clip needs an ID.";
        QTest::newRow("overlay dup") << "ov-dup" << invalid << "Duplicate overlay clip ID: t";
        QTest::newRow("overlay end") << "ov-end" << invalid << "End time must be later than start time.";
        QTest::newRow("overlay text") << "ov-text" << invalid << "Overlay text cannot be empty.";
        QTest::newRow("overlay image") << "ov-image" << invalid << "Select an overlay image file.";
        QTest::newRow("overlay image missing") << "ov-image-missing" << missing << "Overlay image was not found: %1";
        QTest::newRow("overlay video") << "ov-video" << invalid << "Select an overlay video.";
        QTest::newRow("overlay video missing") << "ov-video-missing" << missing << "Overlay video was not found: %1";
        QTest::newRow("no base") << "no-base" << invalid << "Add at least one valid base clip.";
        QTest::newRow("fine") << "fine" << QString() << QString();
    }

    void validationMessagesInOrder()
    {
        QFETCH(QString, what);
        QFETCH(QString, title);
        QFETCH(QString, message);
        const QString absent = file("absent.mp4", false);
        ProgramArrangement a;
        SceneClip base;
        base.id = "a";
        base.endMs = 1000;
        a.sceneClips = {base};
        OverlayClip text;
        text.id = "t";
        text.textData.text = "ok";
        a.overlayClips = {text};
        // Each case breaks one rule; everything before it in the order is fine.
        if (what == "base-id")
            a.sceneClips[0].id.clear();
        else if (what == "base-dup")
            a.sceneClips << a.sceneClips[0];
        else if (what == "base-end") {
            a.sceneClips[0].startMs = 500;
            a.sceneClips[0].endMs = 500;
        }
        else if (what == "image-dir")
            a.sceneClips[0].kind = SceneClip::ImagePlay;
        else if (what == "video-path")
            a.sceneClips[0].kind = SceneClip::SceneVideo;
        else if (what == "video-missing") {
            a.sceneClips[0].kind = SceneClip::SceneVideo;
            a.sceneClips[0].sceneVideoPath = absent;
        } else if (what == "dir-missing") {
            a.sceneClips[0].kind = SceneClip::ImagePlay;
            a.sceneClips[0].imageDirectory = absent;
        } else if (what == "ov-id")
            a.overlayClips[0].id.clear();
        else if (what == "ov-dup")
            a.overlayClips << a.overlayClips[0];
        else if (what == "ov-end") {
            a.overlayClips[0].startMs = 500;
            a.overlayClips[0].endMs = 400;
        } else if (what == "ov-text")
            a.overlayClips[0].textData.text.clear();
        else if (what == "ov-image")
            a.overlayClips[0].kind = OverlayClip::Image;
        else if (what == "ov-image-missing") {
            a.overlayClips[0].kind = OverlayClip::Image;
            a.overlayClips[0].path = absent;
        } else if (what == "ov-video")
            a.overlayClips[0].kind = OverlayClip::Video;
        else if (what == "ov-video-missing") {
            a.overlayClips[0].kind = OverlayClip::Video;
            a.overlayClips[0].path = absent;
        } else if (what == "no-base")
            a.sceneClips.clear();
        const arrangement::Validation v = arrangement::validate(a);
        QCOMPARE(v.ok, title.isEmpty());
        QCOMPARE(v.title, title);
        QCOMPARE(v.message, message.contains("%1") ? message.arg(absent) : message);
    }
};

QTEST_GUILESS_MAIN(TestArrangement)
#include "test_arrangement.moc"
