#pragma once

// Keeps secrets out of every log line and terminal line: stream keys in RTMP paths, HTTP paths
// and query values, SRT passphrases and stream ids, and user:password@ in any URL. Pure
// functions, any thread.

#include <QByteArray>
#include <QString>

namespace selvane {

// One URL with its secrets replaced by "***": the credentials, the last path segment of RTMP
// URLs (the key; the application stays), the whole path of HTTP(S) URLs, and the values of
// query keys that carry secrets (all of them for HTTP(S)). Scheme, host and port stay.
QString maskUrl(const QString &url);

// Every URL inside a text masked as above, and bare "passphrase=" and "streamid=" options.
QByteArray maskSecrets(const QByteArray &text);
QString maskSecrets(const QString &text);

} // namespace selvane
