#include "cli/DemoShow.h"

#include <QColor>
#include <QDir>
#include <QFont>
#include <QImage>
#include <QPainter>

namespace selvane {

namespace {

bool writeCard(const QString &path, const QColor &color, const QString &title)
{
    QImage card(1280, 720, QImage::Format_RGB32);
    card.fill(color);
    QPainter painter(&card);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::white);
    QFont font("DejaVu Sans");
    font.setPixelSize(96);
    font.setBold(true);
    painter.setFont(font);
    painter.drawText(card.rect(), Qt::AlignCenter, title);
    painter.end();
    return card.save(path);
}

} // namespace

bool buildDemoShow(const QString &folder, DemoShow *show, QString *error)
{
    QDir dir(folder);
    if (!dir.mkpath("slides")) {
        *error = QStringLiteral("cannot create %1").arg(dir.filePath("slides"));
        return false;
    }
    const QString slides = dir.filePath("slides");
    if (!writeCard(QDir(slides).filePath("card1.png"), QColor(30, 60, 160), "Selvane") ||
        !writeCard(QDir(slides).filePath("card2.png"), QColor(160, 40, 60), "Live mixer") ||
        !QImage(":/resources/images/logo.png").save(dir.filePath("logo.png"))) {
        *error = QStringLiteral("cannot write the demo pictures into %1").arg(folder);
        return false;
    }
    show->channels = {
        {0, "lavfi://"
            "testsrc2=size=1280x720:rate=30[out0];sine=frequency=1000:sample_rate=48000[out1]"},
        {1, "lavfi://"
            "smptehdbars=size=1280x720:rate=30[out0];sine=frequency=440:sample_rate=48000[out1]"},
        {2,
         "lavfi://testsrc=size=1280x720:rate=30[out0];sine=frequency=660:sample_rate=48000[out1]"},
    };
    ProgramArrangement &a = show->arrangement;
    a = ProgramArrangement{};
    SceneClip bars;
    bars.id = "bars";
    bars.startMs = 0;
    bars.endMs = 5000;
    bars.kind = SceneClip::Channel;
    bars.channel = 1;
    SceneClip signal = bars;
    signal.id = "test-signal";
    signal.startMs = 5000;
    signal.endMs = 10000;
    signal.channel = 0;
    SceneClip cards;
    cards.id = "cards";
    cards.startMs = 10000;
    cards.endMs = 14000;
    cards.kind = SceneClip::ImagePlay;
    cards.imageDirectory = slides;
    cards.paths = arrangement::imagesInDirectory(slides);
    cards.intervalMs = 2000;
    SceneClip pattern = bars;
    pattern.id = "pattern";
    pattern.startMs = 14000;
    pattern.endMs = 0; // open-ended: plays until the show stops
    pattern.channel = 2;
    a.sceneClips = {bars, signal, cards, pattern};

    OverlayClip ticker;
    ticker.id = "ticker";
    ticker.kind = OverlayClip::Text;
    ticker.startMs = 1000;
    ticker.textData.text =
        "Selvane demo  —  four channels, overlays, audio, recording and streaming";
    ticker.textData.fontFamily = "DejaVu Sans";
    ticker.textData.fontPointSize = 22;
    ticker.textData.bold = true;
    ticker.textData.fontColor = Qt::white;
    ticker.textData.backgroundEnabled = true;
    ticker.textData.backgroundColor = QColor(0, 0, 0, 150);
    ticker.textData.shadow = true;
    ticker.textData.scrollable = true;
    ticker.textData.scrollDirection = TextOverlayData::ScrollRightToLeft;
    ticker.textData.scrollStep = 6;
    ticker.textData.scrollTimes = 100;
    ticker.textData.posX = 0.0;
    ticker.textData.posY = 300.0 / 360.0;
    ticker.textData.scrollViewportWidth = 640;
    OverlayClip logo;
    logo.id = "logo";
    logo.kind = OverlayClip::Image;
    logo.path = dir.filePath("logo.png");
    logo.x = 0.86;
    logo.y = 0.04;
    logo.w = 0.1;
    logo.h = 0.1 * 16 / 9;
    logo.opacity = 0.9;
    a.overlayClips = {ticker, logo};
    return true;
}

} // namespace selvane
