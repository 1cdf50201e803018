#pragma once

// The record of one text overlay: words, font, colours, effects, anchor and scrolling. A plain
// value copied freely between the text panel, the overlay manager, the compositor and the
// program arrangement file (where it is the "textData" object); it crosses threads in queued
// signals, so it is registered as a meta type.
//
// Units: posX/posY are fractions of the output size; padding, outline width, shadow offsets and
// the scroll viewport are in units of the 640 x 360 scene and are scaled when drawn.

#include <QColor>
#include <QJsonObject>
#include <QJsonValue>
#include <QMetaType>
#include <QString>

struct TextOverlayData
{
    enum ScrollDirection : int
    {
        ScrollNone = 0,
        ScrollLeftToRight = 1,
        ScrollRightToLeft = 2,
    };

    // Ranges of the text effect editor.
    static constexpr int kMinPointSize = 6;
    static constexpr int kMaxPointSize = 200;
    static constexpr int kMinOutlineWidth = 1;
    static constexpr int kMaxOutlineWidth = 10;
    static constexpr int kMinScrollStep = 1;
    static constexpr int kMaxScrollStep = 50;
    static constexpr int kMinScrollTimes = 1;
    static constexpr int kMaxScrollTimes = 100;
    static constexpr int kMaxOpacity = 255;
    // The longest text: a ticker longer than this would take hours to pass once, and shaping it
    // would hold up the program. Every way a text comes in is held to it.
    static constexpr int kMaxTextLength = 10000;

    // A new record sits 12 scene units from the left and top edges.
    static constexpr double kDefaultPosX = 12.0 / 640.0;
    static constexpr double kDefaultPosY = 12.0 / 360.0;

    int id = -1; // -1 until the overlay manager (or a schedule clip) gives it one
    bool enabled = true;
    QString text;
    QString fontFamily = QStringLiteral("Arial");
    int fontPointSize = 28;
    bool bold = false;
    bool italic = false;
    bool underline = false;
    bool strikeOut = false;
    // Red letters over black effects: readable on the bars and footage an operator lines up
    // with, and the effects stay distinct from the letters once switched on.
    QColor fontColor = QColor(255, 0, 0);
    double posX = kDefaultPosX;
    double posY = kDefaultPosY;
    int zIndex = 0;
    int opacity = kMaxOpacity;
    bool backgroundEnabled = false;
    QColor backgroundColor = QColor(0, 0, 0);
    int backgroundPadding = 6;
    bool outline = false;
    QColor outlineColor = QColor(0, 0, 0);
    int outlineWidth = 2;
    bool shadow = false;
    QColor shadowColor = QColor(0, 0, 0);
    int shadowOffsetX = 2;
    int shadowOffsetY = 2;
    bool scrollable = false;
    int scrollDirection = ScrollNone;
    int scrollStep = 5;  // speed setting: 20 output pixels a second per step
    int scrollTimes = 1; // complete passes; afterwards the text stays off-screen
    // Scene units. -1 (any value below 1) for the width: from the anchor to the right edge of
    // the output; for the height: the text's own height plus room for its shadow and outline.
    double scrollViewportWidth = -1.0;
    double scrollViewportHeight = -1.0;

    bool isDrawable() const { return enabled && !text.isEmpty() && opacity > 0; }
    bool isScrolling() const
    {
        return scrollable &&
               (scrollDirection == ScrollLeftToRight || scrollDirection == ScrollRightToLeft);
    }
    // Speed settings below 2 all scroll at 20 pixels a second.
    double scrollPixelsPerSecond() const { return scrollStep < 2 ? 20.0 : 20.0 * scrollStep; }
    int effectivePasses() const { return scrollTimes < 1 ? 1 : scrollTimes; }

    // The "textData" object; the id belongs to the clip and is not written.
    QJsonObject toJson() const;
    // Every missing key keeps the default of a new record. `formatVersion` is the arrangement
    // file's version; the keys have not changed across the versions read so far.
    static TextOverlayData fromJson(const QJsonObject &object, int formatVersion);

    friend bool operator==(const TextOverlayData &, const TextOverlayData &) = default;
};

// A colour as the object {"rgba": ARGB} (alpha in the top byte).
QJsonValue textColorToJson(const QColor &color);
// {"rgba": n} gives that ARGB value, a string is read as a colour name, anything else is white.
QColor textColorFromJson(const QJsonValue &value);

// Registers TextOverlayData for queued connections; called once at start-up.
void registerTextOverlayMetaType();

Q_DECLARE_METATYPE(TextOverlayData)
