#include "compose/TextOverlayData.h"

#include <QMetaType>

QJsonValue textColorToJson(const QColor &color)
{
    QJsonObject object;
    // A JSON number holds every 32-bit value exactly; QRgb is unsigned, so nothing goes negative.
    object.insert(QStringLiteral("rgba"), double(color.rgba()));
    return object;
}

QColor textColorFromJson(const QJsonValue &value)
{
    if (value.isObject()) {
        const QJsonValue rgba = value.toObject().value(QStringLiteral("rgba"));
        if (rgba.isDouble())
            return QColor::fromRgba(QRgb(quint32(qint64(rgba.toDouble()))));
    } else if (value.isString()) {
        const QColor named(value.toString());
        if (named.isValid())
            return named;
    }
    return QColor(Qt::white);
}

QJsonObject TextOverlayData::toJson() const
{
    QJsonObject o;
    o.insert("enabled", enabled);
    o.insert("text", text);
    o.insert("fontFamily", fontFamily);
    o.insert("fontPointSize", fontPointSize);
    o.insert("bold", bold);
    o.insert("italic", italic);
    o.insert("underline", underline);
    o.insert("strikeOut", strikeOut);
    o.insert("fontColor", textColorToJson(fontColor));
    o.insert("posX", posX);
    o.insert("posY", posY);
    o.insert("zIndex", zIndex);
    o.insert("opacity", opacity);
    o.insert("backgroundEnabled", backgroundEnabled);
    o.insert("backgroundColor", textColorToJson(backgroundColor));
    o.insert("backgroundPadding", backgroundPadding);
    o.insert("outline", outline);
    o.insert("outlineColor", textColorToJson(outlineColor));
    o.insert("outlineWidth", outlineWidth);
    o.insert("shadow", shadow);
    o.insert("shadowColor", textColorToJson(shadowColor));
    o.insert("shadowOffsetX", shadowOffsetX);
    o.insert("shadowOffsetY", shadowOffsetY);
    o.insert("scrollable", scrollable);
    o.insert("scrollDirection", scrollDirection);
    o.insert("scrollStep", scrollStep);
    o.insert("scrollTimes", scrollTimes);
    o.insert("scrollViewportWidth", scrollViewportWidth);
    o.insert("scrollViewportHeight", scrollViewportHeight);
    return o;
}

namespace {

bool fromJsonValue(const QJsonValue &v, bool fallback) { return v.toBool(fallback); }
int fromJsonValue(const QJsonValue &v, int fallback) { return v.toInt(fallback); }
double fromJsonValue(const QJsonValue &v, double fallback) { return v.toDouble(fallback); }

// A present key replaces the field; a value of the wrong type keeps what the field held.
template <typename T>
void readValue(const QJsonObject &o, const char *key, T &field)
{
    const QJsonValue v = o.value(QLatin1String(key));
    if (!v.isUndefined())
        field = fromJsonValue(v, field);
}

void readString(const QJsonObject &o, const char *key, QString &field)
{
    const QJsonValue v = o.value(QLatin1String(key));
    if (v.isString())
        field = v.toString();
}

void readColor(const QJsonObject &o, const char *key, QColor &field)
{
    const QJsonValue v = o.value(QLatin1String(key));
    if (!v.isUndefined())
        field = textColorFromJson(v);
}

} // namespace

TextOverlayData TextOverlayData::fromJson(const QJsonObject &o, int formatVersion)
{
    Q_UNUSED(formatVersion);
    TextOverlayData d;
    readValue(o, "enabled", d.enabled);
    readString(o, "text", d.text);
    readString(o, "fontFamily", d.fontFamily);
    readValue(o, "fontPointSize", d.fontPointSize);
    readValue(o, "bold", d.bold);
    readValue(o, "italic", d.italic);
    readValue(o, "underline", d.underline);
    readValue(o, "strikeOut", d.strikeOut);
    readColor(o, "fontColor", d.fontColor);
    readValue(o, "posX", d.posX);
    readValue(o, "posY", d.posY);
    readValue(o, "zIndex", d.zIndex);
    readValue(o, "opacity", d.opacity);
    readValue(o, "backgroundEnabled", d.backgroundEnabled);
    readColor(o, "backgroundColor", d.backgroundColor);
    readValue(o, "backgroundPadding", d.backgroundPadding);
    readValue(o, "outline", d.outline);
    readColor(o, "outlineColor", d.outlineColor);
    readValue(o, "outlineWidth", d.outlineWidth);
    readValue(o, "shadow", d.shadow);
    readColor(o, "shadowColor", d.shadowColor);
    readValue(o, "shadowOffsetX", d.shadowOffsetX);
    readValue(o, "shadowOffsetY", d.shadowOffsetY);
    readValue(o, "scrollable", d.scrollable);
    readValue(o, "scrollDirection", d.scrollDirection);
    readValue(o, "scrollStep", d.scrollStep);
    readValue(o, "scrollTimes", d.scrollTimes);
    readValue(o, "scrollViewportWidth", d.scrollViewportWidth);
    readValue(o, "scrollViewportHeight", d.scrollViewportHeight);
    return d;
}

void registerTextOverlayMetaType()
{
    qRegisterMetaType<TextOverlayData>("TextOverlayData");
}
