#include "net/SecretMask.h"

#include <QRegularExpression>
#include <QStringList>

namespace selvane {

namespace {

const QString kMask = QStringLiteral("***");

bool isSecretKey(const QString &key)
{
    static const QStringList keys{"passphrase",   "streamid", "key",     "token", "password",
                                  "pass",         "secret",   "auth",    "sig",   "signature",
                                  "access_token", "apikey",   "api_key", "pwd"};
    return keys.contains(key.toLower());
}

QString maskQuery(const QString &query, bool everyValue)
{
    QStringList parts = query.split('&');
    for (QString &part : parts) {
        const qsizetype eq = part.indexOf('=');
        if (eq < 0) {
            if (everyValue && !part.isEmpty())
                part = kMask;
            continue;
        }
        if (everyValue || isSecretKey(part.left(eq)))
            part = part.left(eq + 1) + kMask;
    }
    return parts.join('&');
}

} // namespace

QString maskUrl(const QString &url)
{
    const qsizetype schemeEnd = url.indexOf(QLatin1String("://"));
    if (schemeEnd <= 0)
        return url;
    const QString scheme = url.left(schemeEnd).toLower();
    QString rest = url.mid(schemeEnd + 3);
    // The query (SRT's stream id may itself hold "?", "/" and "#": everything after the first
    // "?" is the query).
    QString query;
    const qsizetype question = rest.indexOf('?');
    if (question >= 0) {
        query = rest.mid(question + 1);
        rest = rest.left(question);
    }
    const qsizetype slash = rest.indexOf('/');
    QString authority = slash >= 0 ? rest.left(slash) : rest;
    QString path = slash >= 0 ? rest.mid(slash) : QString();
    const qsizetype at = authority.lastIndexOf('@');
    if (at >= 0)
        authority = kMask + authority.mid(at);
    const bool http = scheme == "http" || scheme == "https";
    if (scheme.startsWith("rtmp")) {
        const qsizetype last = path.lastIndexOf('/');
        if (last >= 0 && last + 1 < path.size())
            path = path.left(last + 1) + kMask;
    } else if (http && path.size() > 1) {
        path = "/" + kMask;
    }
    QString masked = scheme + "://" + authority + path;
    if (question >= 0)
        masked += "?" + maskQuery(query, http);
    return masked;
}

QString maskSecrets(const QString &input)
{
    if (!input.contains(QLatin1String("://")) && !input.contains('='))
        return input;
    // The expressions do not match at all in text with a broken surrogate pair: such text is
    // made valid first (the broken halves become replacement characters).
    QString text = input;
    for (const QChar c : input)
        if (c.isSurrogate()) {
            text = QString::fromUtf8(input.toUtf8());
            break;
        }
    static const QRegularExpression url(QStringLiteral("[A-Za-z][A-Za-z0-9+.-]*://[^\\s'\"<>]+"));
    QString out;
    qsizetype from = 0;
    for (auto it = url.globalMatch(text); it.hasNext();) {
        const QRegularExpressionMatch m = it.next();
        out += text.mid(from, m.capturedStart() - from);
        out += maskUrl(m.captured());
        from = m.capturedEnd();
    }
    out += text.mid(from);
    // Options printed on their own, outside a URL.
    static const QRegularExpression option(
        QStringLiteral("\\b(passphrase|streamid)([=:]\\s*)([^\\s&,'\"]*(?:,[^\\s&'\"]*)*)"),
        QRegularExpression::CaseInsensitiveOption);
    out.replace(option, QStringLiteral("\\1\\2") + kMask);
    return out;
}

QByteArray maskSecrets(const QByteArray &text)
{
    if (!text.contains("://") && !text.contains('='))
        return text;
    return maskSecrets(QString::fromUtf8(text)).toUtf8();
}

} // namespace selvane
