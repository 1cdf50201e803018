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

void readBool(const QJsonObject &o, const char *key, bool &field)
{
    const QJsonValue v = o.value(QLatin1String(key));
    if (!v.isUndefined())
        field = v.toBool(field);
}

void readInt(const QJsonObject &o, const char *key, int &field)
{
    const QJsonValue v = o.value(QLatin1String(key));
    if (!v.isUndefined())
        field = v.toInt(field);
}

void readDouble(const QJsonObject &o, const char *key, double &field)
{
    const QJsonValue v = o.value(QLatin1String(key));
    if (!v.isUndefined())
        field = v.toDouble(field);
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
    readBool(o, "enabled", d.enabled);
    readString(o, "text", d.text);
    readString(o, "fontFamily", d.fontFamily);
    readInt(o, "fontPointSize", d.fontPointSize);
    readBool(o, "bold", d.bold);
    readBool(o, "italic", d.italic);
    readBool(o, "underline", d.underline);
    readBool(o, "strikeOut", d.strikeOut);
    readColor(o, "fontColor", d.fontColor);
    readDouble(o, "posX", d.posX);
    readDouble(o, "posY", d.posY);
    readInt(o, "zIndex", d.zIndex);
    readInt(o, "opacity", d.opacity);
    readBool(o, "backgroundEnabled", d.backgroundEnabled);
    readColor(o, "backgroundColor", d.backgroundColor);
    readInt(o, "backgroundPadding", d.backgroundPadding);
    readBool(o, "outline", d.outline);
    readColor(o, "outlineColor", d.outlineColor);
    readInt(o, "outlineWidth", d.outlineWidth);
    readBool(o, "shadow", d.shadow);
    readColor(o, "shadowColor", d.shadowColor);
    readInt(o, "shadowOffsetX", d.shadowOffsetX);
    readInt(o, "shadowOffsetY", d.shadowOffsetY);
    readBool(o, "scrollable", d.scrollable);
    readInt(o, "scrollDirection", d.scrollDirection);
    readInt(o, "scrollStep", d.scrollStep);
    readInt(o, "scrollTimes", d.scrollTimes);
    readDouble(o, "scrollViewportWidth", d.scrollViewportWidth);
    readDouble(o, "scrollViewportHeight", d.scrollViewportHeight);
    return d;
}

void registerTextOverlayMetaType()
{
    qRegisterMetaType<TextOverlayData>("TextOverlayData");
}
