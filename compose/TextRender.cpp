#include "compose/TextRender.h"

#include "compose/OverlayScene.h"

#include <QFontMetricsF>
#include <QImage>
#include <QPainterPath>
#include <QRawFont>
#include <QTextLayout>
#include <algorithm>
#include <cmath>

namespace selvane {

namespace {

QFont scaledFont(const TextOverlayData &data, double sy)
{
    QFont font(data.fontFamily);
    font.setPointSizeF(std::max(1.0, data.fontPointSize * sy));
    font.setWeight(data.bold ? QFont::Bold : QFont::Normal);
    font.setItalic(data.italic);
    font.setUnderline(data.underline);
    font.setStrikeOut(data.strikeOut);
    return font;
}

// Distances kept in scene units become whole output pixels, rounded half away from zero.
int scenePixels(int sceneUnits, double factor)
{
    return int(std::lround(sceneUnits * factor));
}

// Point sizes become pixels at the resolution of the pictures the letters are painted on.
const QImage &layoutDevice()
{
    static const QImage device(1, 1, QImage::Format_ARGB32_Premultiplied);
    return device;
}

// The glyphs of `run` whose origin lies within [left, right).
QGlyphRun glyphsWithin(const QGlyphRun &run, double left, double right)
{
    const QList<quint32> indexes = run.glyphIndexes();
    const QList<QPointF> positions = run.positions();
    QList<quint32> keptIndexes;
    QList<QPointF> keptPositions;
    for (qsizetype i = 0; i < positions.size(); ++i) {
        if (positions[i].x() < left || positions[i].x() >= right)
            continue;
        keptIndexes.append(indexes[i]);
        keptPositions.append(positions[i]);
    }
    QGlyphRun part = run;
    part.setGlyphIndexes(keptIndexes);
    part.setPositions(keptPositions);
    return part;
}

} // namespace

TextRender::TextRender(const TextOverlayData &data, QSize picture)
    : m_data(data), m_picture(picture)
{
    const double sx = picture.width() / kSceneWidth;
    const double sy = picture.height() / kSceneHeight;
    m_font = scaledFont(data, sy);
    const QFontMetricsF metrics(m_font, &layoutDevice());
    m_padX = scenePixels(data.backgroundPadding, sx);
    m_padY = scenePixels(data.backgroundPadding, sy);
    m_outlinePx = data.outline ? scenePixels(data.outlineWidth, sy) : 0;
    m_shadowDx = data.shadow ? scenePixels(data.shadowOffsetX, sx) : 0;
    m_shadowDy = data.shadow ? scenePixels(data.shadowOffsetY, sy) : 0;
    m_widestGlyph = metrics.maxWidth();

    QTextOption option;
    option.setWrapMode(QTextOption::NoWrap);
    const QStringList lines = data.text.split(QLatin1Char('\n'));
    for (qsizetype i = 0; i < lines.size(); ++i) {
        QTextLayout layout(lines[i], m_font, const_cast<QImage *>(&layoutDevice()));
        layout.setTextOption(option);
        layout.beginLayout();
        QTextLine line = layout.createLine();
        if (line.isValid())
            line.setLineWidth(1e7);
        layout.endLayout();
        Line laid;
        laid.baseline = metrics.ascent() + i * metrics.lineSpacing();
        if (line.isValid()) {
            m_textWidth = std::max(m_textWidth, line.naturalTextWidth());
            // Runs come with the line's own baseline; they are kept relative to the text's.
            for (QGlyphRun run : layout.glyphRuns()) {
                QList<QPointF> positions = run.positions();
                for (QPointF &p : positions)
                    p.ry() += laid.baseline - line.ascent();
                run.setPositions(positions);
                laid.runs.append(run);
            }
        }
        m_lines.append(laid);
    }
    m_textHeight = metrics.height() + (lines.size() - 1) * metrics.lineSpacing();

    // Shadow and outline reach beyond the letters; a little more for antialiased edges.
    const int reach = m_outlinePx / 2 + 2;
    m_ink = QRect(
        QPoint(-reach + std::min(0, m_shadowDx), -reach + std::min(0, m_shadowDy)),
        QPoint(int(std::ceil(m_textWidth + m_widestGlyph * 0.25)) + reach + std::max(0, m_shadowDx),
               int(std::ceil(m_textHeight)) + reach + std::max(0, m_shadowDy)));
}

double TextRender::opacity() const
{
    return std::clamp(m_data.opacity, 0, TextOverlayData::kMaxOpacity) /
           double(TextOverlayData::kMaxOpacity);
}

TextRender::Placement TextRender::placement(qint64 elapsedUs) const
{
    const double sx = m_picture.width() / kSceneWidth;
    const double sy = m_picture.height() / kSceneHeight;
    const QPointF anchor(m_data.posX * m_picture.width(), m_data.posY * m_picture.height());
    Placement at;
    at.visible = true;
    QPointF textTopLeft = anchor;
    QRectF boxRect(anchor, QSizeF(m_textWidth, m_textHeight));
    at.clip = QRect(QPoint(0, 0), m_picture);
    if (m_data.isScrolling()) {
        const double visibleWidth = m_data.scrollViewportWidth >= 1.0
                                        ? m_data.scrollViewportWidth * sx
                                        : std::max(0.0, m_picture.width() - anchor.x());
        const double viewportHeight =
            m_data.scrollViewportHeight >= 1.0
                ? m_data.scrollViewportHeight * sy
                : m_textHeight + std::max(0, m_shadowDy) + std::ceil(m_outlinePx / 2.0);
        const QRectF viewport(anchor, QSizeF(visibleWidth, viewportHeight));
        boxRect = viewport;
        at.clip = viewport.toAlignedRect() & at.clip;
        const double distance = elapsedUs / 1e6 * m_data.scrollPixelsPerSecond();
        const double pass = std::max(0.001, m_textWidth + visibleWidth);
        if (distance >= pass * m_data.effectivePasses())
            at.visible = false; // every pass done: the text stays off-screen
        const double offset = std::fmod(distance, pass);
        const double x = m_data.scrollDirection == TextOverlayData::ScrollRightToLeft
                             ? viewport.left() + visibleWidth - offset
                             : viewport.left() - m_textWidth + offset;
        textTopLeft = QPointF(x, anchor.y());
    }
    if (m_data.backgroundEnabled)
        at.box = boxRect.adjusted(-m_padX, -m_padY, m_padX, m_padY).toRect();
    at.topLeft = QPoint(int(std::lround(textTopLeft.x())), int(std::lround(textTopLeft.y())));
    return at;
}

void TextRender::paintLetters(QPainter &painter, QPoint topLeft, QRect area) const
{
    // Glyphs are picked by their origin: one starting a glyph's width (and the effects' reach)
    // before the area may still reach into it.
    const double margin = m_widestGlyph + m_outlinePx + std::abs(m_shadowDx) + 2;
    const double left = area.left() - topLeft.x() - margin;
    const double right = area.right() + 1 - topLeft.x() + margin;
    QList<QGlyphRun> parts;
    for (const Line &line : m_lines)
        for (const QGlyphRun &run : line.runs) {
            QGlyphRun part = glyphsWithin(run, left, right);
            if (!part.glyphIndexes().isEmpty())
                parts.append(part);
        }
    if (parts.isEmpty())
        return;
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing, true);
    painter.setRenderHint(QPainter::TextAntialiasing, true);
    const QPointF origin(topLeft);
    if (m_data.shadow) {
        painter.setPen(m_data.shadowColor);
        for (const QGlyphRun &part : parts)
            painter.drawGlyphRun(origin + QPointF(m_shadowDx, m_shadowDy), part);
    }
    if (m_data.outline && m_outlinePx > 0) {
        QPainterPath path;
        for (const QGlyphRun &part : parts) {
            const QRawFont font = part.rawFont();
            const QList<quint32> indexes = part.glyphIndexes();
            const QList<QPointF> positions = part.positions();
            for (qsizetype i = 0; i < indexes.size(); ++i)
                path.addPath(font.pathForGlyph(indexes[i]).translated(origin + positions[i]));
        }
        painter.strokePath(path, QPen(m_data.outlineColor, m_outlinePx, Qt::SolidLine, Qt::RoundCap,
                                      Qt::RoundJoin));
    }
    painter.setPen(m_data.fontColor);
    for (const QGlyphRun &part : parts)
        painter.drawGlyphRun(origin, part);
    painter.restore();
}

} // namespace selvane
