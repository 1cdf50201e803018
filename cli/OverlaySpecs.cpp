#include "cli/OverlaySpecs.h"

#include <QCoreApplication>
#include <QStringList>
#include <cmath>

namespace selvane {

namespace {

QString tr(const char *text)
{
    return QCoreApplication::translate("selvane", text);
}

// The band sits 12 scene units above the bottom edge: 24-point letters are about 38 units tall,
// plus the shadow and the band's padding.
constexpr int kTickerPointSize = 24;
constexpr double kTickerTopScene = 306.0;
constexpr int kTickerPadding = 6;
constexpr int kTickerSpeedStep = 5; // 100 output pixels a second
constexpr QRgb kTickerBand = 0xB0000000;

} // namespace

TextOverlayData tickerTextOverlay(const QString &text, int id)
{
    TextOverlayData ticker;
    ticker.id = id;
    ticker.text = text;
    ticker.fontPointSize = kTickerPointSize;
    ticker.bold = true;
    ticker.fontColor = QColor(255, 255, 255);
    ticker.posX = 0.0;
    ticker.posY = kTickerTopScene / 360.0;
    ticker.backgroundEnabled = true;
    ticker.backgroundColor = QColor::fromRgba(kTickerBand);
    ticker.backgroundPadding = kTickerPadding;
    ticker.shadow = true;
    ticker.shadowColor = QColor(0, 0, 0);
    ticker.shadowOffsetX = 2;
    ticker.shadowOffsetY = 2;
    ticker.scrollable = true;
    ticker.scrollDirection = TextOverlayData::ScrollRightToLeft;
    ticker.scrollStep = kTickerSpeedStep;
    ticker.scrollTimes = TextOverlayData::kMaxScrollTimes;
    ticker.scrollViewportWidth = -1.0; // the whole width
    ticker.scrollViewportHeight = -1.0;
    return ticker;
}

bool parseTextOverlaySpec(const QString &text, int id, TextOverlayData *overlay, QString *error)
{
    if (text.trimmed().isEmpty()) {
        *error = tr("the text overlay needs some words, got \"%1\"").arg(text);
        return false;
    }
    if (text.size() > TextOverlayData::kMaxTextLength) {
        *error = tr("the text overlay takes at most %1 characters, got %2")
                     .arg(TextOverlayData::kMaxTextLength)
                     .arg(text.size());
        return false;
    }
    *overlay = tickerTextOverlay(text, id);
    return true;
}

bool parseMediaOverlaySpec(const QString &spec, MediaOverlayRecord::Kind kind, int id,
                           MediaOverlayRecord *record, QString *error)
{
    const qsizetype at = spec.lastIndexOf(QLatin1Char('@'));
    if (at < 0) {
        *error = tr("overlay \"%1\": expected PATH@x,y,w,h (a rectangle in the 640x360 scene)")
                     .arg(spec);
        return false;
    }
    const QString path = spec.left(at);
    if (path.trimmed().isEmpty()) {
        *error = tr("overlay \"%1\": the path before '@' is empty").arg(spec);
        return false;
    }
    const QStringList parts = spec.mid(at + 1).split(QLatin1Char(','));
    if (parts.size() != 4) {
        *error = tr("overlay \"%1\": expected four numbers x,y,w,h after '@'").arg(spec);
        return false;
    }
    double values[4] = {};
    for (int i = 0; i < 4; ++i) {
        bool ok = false;
        values[i] = parts[i].trimmed().toDouble(&ok);
        if (!ok || !std::isfinite(values[i])) {
            *error = tr("overlay \"%1\": \"%2\" is not a number").arg(spec, parts[i]);
            return false;
        }
    }
    if (values[2] <= 0.0 || values[3] <= 0.0) {
        *error = tr("overlay \"%1\": width and height must be positive").arg(spec);
        return false;
    }
    MediaOverlayRecord parsed;
    parsed.id = id;
    parsed.kind = kind;
    parsed.filePath = path;
    parsed.rect = QRectF(values[0], values[1], values[2], values[3]);
    parsed.visible = true;
    parsed.opacity = 1.0;
    *record = parsed;
    return true;
}

} // namespace selvane
