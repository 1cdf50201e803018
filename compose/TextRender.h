#pragma once

// One text overlay laid out for a picture of a given size: the font scaled from the scene, the
// lines shaped once into glyph runs, the places of box, viewport and letters at any moment of
// the scroll, and the painting of the letters (shadow, outline, letters) inside any part of the
// line. Laying out happens once per change of the record or the picture size; painting a part
// touches only the glyphs that fall into it, so a ticker of a hundred thousand characters costs
// no more per part than a short one.
//
// Threads: a value used by one thread at a time (the program thread, or the window's preview).

#include "compose/TextOverlayData.h"

#include <QFont>
#include <QGlyphRun>
#include <QList>
#include <QPainter>
#include <QRect>
#include <QSize>

namespace selvane {

class TextRender
{
public:
    TextRender(const TextOverlayData &data, QSize picture);

    const TextOverlayData &data() const { return m_data; }
    QSize picture() const { return m_picture; }

    struct Placement
    {
        bool visible = false;
        QRect box;      // the background, padding included (empty: none)
        QRect clip;     // what the letters may cover: the viewport of a scroll, else the picture
        QPoint topLeft; // the letters' top-left, in whole pixels
    };
    // Where everything is `elapsedUs` after the scroll began.
    Placement placement(qint64 elapsedUs) const;

    // The pixels the letters and their effects may cover, relative to their top-left.
    QRect inkRect() const { return m_ink; }
    // Paints shadow, outline and letters, with the letters' top-left at `topLeft`, of the glyphs
    // that may touch `area` (painter coordinates). The painter's opacity is the overlay's.
    void paintLetters(QPainter &painter, QPoint topLeft, QRect area) const;
    double opacity() const;

private:
    struct Line
    {
        QList<QGlyphRun> runs;
        double baseline = 0.0; // from the letters' top
    };

    TextOverlayData m_data;
    QSize m_picture;
    QFont m_font;
    QList<Line> m_lines;
    double m_textWidth = 0.0;
    double m_textHeight = 0.0;
    double m_widestGlyph = 0.0;
    int m_padX = 0, m_padY = 0, m_outlinePx = 0, m_shadowDx = 0, m_shadowDy = 0;
    QRect m_ink;
};

} // namespace selvane
