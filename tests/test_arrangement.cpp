// The program arrangement file: what is rejected, how loose values are read (clamping, path
// lists, kinds, old pixel rectangles), export-import equality, and that validation stops at the
// first broken rule, naming what is wrong.

#include "schedule/ProgramArrangement.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>
#include <QtTest>
#include <functional>

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

private slots:
    void rejectedDocuments()
    {
        for (const QByteArray &bytes : {QByteArray(R"({"version":3,"sceneClips":[{"id":"a"}]})"),
                                        QByteArray(R"({"format":"other","sceneClips":[]})"),
                                        QByteArray("[1,2]"), QByteArray("{\"format\":")}) {
            QString error;
            const ProgramArrangement a = arrangement::fromJson(bytes, &error);
            QVERIFY2(!error.isEmpty(), bytes.constData());
            QCOMPARE(a, ProgramArrangement{});
        }
    }

    void looseValuesAreReadByTheRules()
    {
        QString error;
        const ProgramArrangement a = arrangement::fromJson(document(R"(
            "sceneClips":[
              {"id":"hi","startMs":1500.9,"kind":"channel","channel":7},
              {"id":"lo","kind":"somethingElse","channel":-2},
              {"id":"seq","kind":"imageSequence","paths":"a.png||b.png|"},
              {"id":"mix","channel":1,"transition":{"type":"mix","durationMs":500}},
              {"id":"bad","channel":1,"transition":{"type":"spin"}},
              "not an object"
            ],
            "overlayClips":[
              {"id":"t","overlayKind":"text"},
              {"id":"m1","mediaType":"video","overlayKind":"text"},
              {"id":"m2","mediaType":"photo"}
            ])"),
                                                           &error);
        QVERIFY2(error.isEmpty(), qPrintable(error));
        QCOMPARE(a.sceneClips.size(), 5);
        QCOMPARE(a.sceneClips[0].transition, std::nullopt); // cuts, or the show's default
        QCOMPARE(a.sceneClips[3].transition->kind, selvane::TransitionKind::Mix);
        QCOMPARE(a.sceneClips[3].transition->durationMs, 500);
        QCOMPARE(a.sceneClips[4].transition->kind, selvane::TransitionKind::Cut); // a bad one
        QCOMPARE(a.sceneClips[0].startMs, 1500);
        QCOMPARE(a.sceneClips[0].channel, 3); // clamped to the four channels
        QCOMPARE(a.sceneClips[1].channel, 0);
        QCOMPARE(a.sceneClips[2].paths, (QStringList{"a.png", "b.png"}));
        QCOMPARE(a.overlayClips[1].kind, int(OverlayClip::Video)); // the media type wins
        QCOMPARE(a.overlayClips[2].kind, int(OverlayClip::Image));
        QVERIFY(!a.overlayClips[0].textData.text.isEmpty()); // a caption, never an empty text

        // Version 2 kept rectangles in pixels of a 1920 x 1080 canvas.
        const ProgramArrangement v2 =
            arrangement::fromJson(document(R"("sceneClips":[],"overlayClips":[
                     {"id":"b","mediaType":"image","x":960,"y":0,"w":1920,"h":540}])",
                                           2),
                                  &error);
        QCOMPARE(QRectF(v2.overlayClips[0].x, v2.overlayClips[0].y, v2.overlayClips[0].w,
                        v2.overlayClips[0].h),
                 QRectF(0.5, 0, 1.0, 0.5));
    }

    void imageClipsTakeTheirFolder()
    {
        QDir(m_dir.path()).mkpath("slides");
        const QString slides = QDir(m_dir.path()).filePath("slides");
        for (const char *name : {"b.jpg", "a.png", "notes.txt", "d.BMP"})
            QFile(QDir(slides).filePath(name)).open(QIODevice::WriteOnly);
        QString error;
        const ProgramArrangement a = arrangement::fromJson(
            document(QStringLiteral(
                         R"("sceneClips":[{"id":"s","kind":"imagePlay","imageDirectory":"%1"}])")
                         .arg(slides)),
            &error);
        QStringList names;
        for (const QString &p : a.sceneClips[0].paths)
            names << QFileInfo(p).fileName();
        // Extensions match in any case (cameras write IMG_0001.JPG); other files are left out.
        QCOMPARE(names, (QStringList{"a.png", "b.jpg", "d.BMP"}));
    }

    void exportThenImportGivesEqualRecords()
    {
        ProgramArrangement a;
        a.timelineZero = "2026-11-22 08:30:00";
        SceneClip img;
        img.id = "img";
        img.kind = SceneClip::ImagePlay;
        img.paths = QStringList{"/a b/1.png", "/c/2.jpg"};
        img.imageLoop = false;
        SceneClip wiped;
        wiped.id = "wiped";
        wiped.transition = selvane::Transition{selvane::TransitionKind::Wipe, 750,
                                               selvane::WipeDirection::BottomUp, 0xff336699};
        a.sceneClips = {img, wiped};
        OverlayClip text;
        text.id = "ticker";
        text.textData.text = "Breaking";
        text.textData.scrollable = true;
        text.textData.fontColor = QColor(10, 20, 30, 40);
        text.x = 0.125;
        OverlayClip video;
        video.id = "pip";
        video.kind = OverlayClip::Video;
        video.path = "/v/pip.mp4";
        video.opacity = 0.5;
        a.overlayClips = {text, video};
        QString error;
        QCOMPARE(arrangement::fromJson(arrangement::toJson(a), &error), a);
        QVERIFY(error.isEmpty());
    }

    void validationStopsAtTheFirstBrokenRule()
    {
        const QString absent = QDir(m_dir.path()).filePath("absent.mp4");
        const auto valid = [] {
            ProgramArrangement a;
            SceneClip base;
            base.id = "a";
            base.endMs = 1000;
            a.sceneClips = {base};
            OverlayClip text;
            text.id = "t";
            text.textData.text = "ok";
            a.overlayClips = {text};
            return a;
        };
        QVERIFY(arrangement::validate(valid()).ok);
        const QList<std::pair<QString, std::function<void(ProgramArrangement &)>>> breaks{
            {"a",
             [](ProgramArrangement &a) {
                 a.sceneClips << a.sceneClips[0];
             }},
            {QString(),
             [](ProgramArrangement &a) {
                 a.sceneClips[0].startMs = 1000;
             }},
            {absent,
             [&](ProgramArrangement &a) {
                 a.sceneClips[0].kind = SceneClip::SceneVideo;
                 a.sceneClips[0].sceneVideoPath = absent;
             }},
            {"t",
             [](ProgramArrangement &a) {
                 a.overlayClips << a.overlayClips[0];
             }},
            {QString(),
             [](ProgramArrangement &a) {
                 a.overlayClips[0].textData.text.clear();
             }},
            {absent,
             [&](ProgramArrangement &a) {
                 a.overlayClips[0].kind = OverlayClip::Image;
                 a.overlayClips[0].path = absent;
             }},
            {QString(),
             [](ProgramArrangement &a) {
                 a.sceneClips.clear();
             }},
        };
        for (const auto &[named, brk] : breaks) {
            ProgramArrangement a = valid();
            brk(a);
            const arrangement::Validation v = arrangement::validate(a);
            QVERIFY(!v.ok && !v.title.isEmpty() && !v.message.isEmpty());
            QVERIFY2(v.message.contains(named), qPrintable(v.message));
        }
    }
};

QTEST_GUILESS_MAIN(TestArrangement)
#include "test_arrangement.moc"
