#pragma once

// The fields of a request's JSON body read with their types and ranges: the first problem
// becomes the request's refusal (400) and later reads do nothing. A value used on the control
// server's thread while one request is read.

#include <QByteArray>
#include <QColor>
#include <QJsonObject>
#include <QJsonValue>
#include <QString>
#include <QStringList>
#include <cmath>
#include <optional>

namespace selvane::control {

// status 0: accepted. Otherwise the HTTP status and a message for the client; `allow` lists the
// methods a path takes (405).
struct Refusal
{
    int status = 0;
    QString message;
    QByteArray allow;
    bool ok() const { return status == 0; }
};

// Reads the fields of one JSON object; the first problem is kept and later reads do nothing.
class Fields
{
public:
    explicit Fields(QJsonObject object) : m_object(std::move(object)) {}

    bool has(const char *key) const { return m_object.contains(QLatin1String(key)); }
    QJsonValue value(const char *key) const { return m_object.value(QLatin1String(key)); }
    const Refusal &refusal() const { return m_refusal; }
    bool ok() const { return m_refusal.ok(); }
    void fail(const QString &message)
    {
        if (m_refusal.ok())
            m_refusal = {400, message, {}};
    }

    std::optional<double> number(const char *key, double low, double high, bool required = false)
    {
        const QJsonValue v = value(key);
        if (!ok() || !check(key, v, required, v.isDouble(), "a number"))
            return std::nullopt;
        const double d = v.toDouble();
        if (!(d >= low && d <= high)) {
            fail(QStringLiteral("\"%1\" must be from %2 to %3")
                     .arg(QLatin1String(key))
                     .arg(low)
                     .arg(high));
            return std::nullopt;
        }
        return d;
    }
    std::optional<qint64> integer(const char *key, double low, double high, bool required = false)
    {
        const std::optional<double> d = number(key, low, high, required);
        if (!d)
            return std::nullopt;
        if (std::floor(*d) != *d) {
            fail(QStringLiteral("\"%1\" must be a whole number").arg(QLatin1String(key)));
            return std::nullopt;
        }
        return qint64(*d);
    }
    std::optional<bool> boolean(const char *key)
    {
        const QJsonValue v = value(key);
        if (!ok() || !check(key, v, false, v.isBool(), "true or false"))
            return std::nullopt;
        return v.toBool();
    }
    std::optional<QString> string(const char *key, qsizetype maxLength, bool required = false)
    {
        const QJsonValue v = value(key);
        if (!ok() || !check(key, v, required, v.isString(), "a string"))
            return std::nullopt;
        const QString s = v.toString();
        if (s.size() > maxLength) {
            fail(QStringLiteral("\"%1\" is longer than %2 characters")
                     .arg(QLatin1String(key))
                     .arg(maxLength));
            return std::nullopt;
        }
        return s;
    }
    // One of `words` (case-insensitive); its index.
    std::optional<int> word(const char *key, const QStringList &words, bool required = false)
    {
        const std::optional<QString> s = string(key, 64, required);
        if (!s)
            return std::nullopt;
        const int index = int(words.indexOf(s->trimmed().toLower()));
        if (index < 0) {
            fail(QStringLiteral("\"%1\" must be one of: %2")
                     .arg(QLatin1String(key), words.join(QStringLiteral(", "))));
            return std::nullopt;
        }
        return index;
    }
    // {"rgba": ARGB} or a colour name.
    void colour(const char *key)
    {
        const QJsonValue v = value(key);
        if (!ok() || v.isUndefined())
            return;
        if (v.isString() && QColor::isValidColorName(v.toString()))
            return;
        const QJsonValue rgba = v.toObject().value(QLatin1String("rgba"));
        if (rgba.isDouble() && rgba.toDouble() >= 0 && rgba.toDouble() <= 4294967295.0 &&
            std::floor(rgba.toDouble()) == rgba.toDouble())
            return;
        fail(QStringLiteral("\"%1\" must be a colour name or {\"rgba\": ARGB}")
                 .arg(QLatin1String(key)));
    }

private:
    bool check(const char *key, const QJsonValue &v, bool required, bool rightType,
               const char *what)
    {
        if (v.isUndefined()) {
            if (required)
                fail(QStringLiteral("\"%1\" is missing").arg(QLatin1String(key)));
            return false;
        }
        if (!rightType) {
            fail(QStringLiteral("\"%1\" must be %2").arg(QLatin1String(key), QLatin1String(what)));
            return false;
        }
        return true;
    }

    QJsonObject m_object;
    Refusal m_refusal;
};

} // namespace selvane::control
