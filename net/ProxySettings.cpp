#include "net/ProxySettings.h"

#include "media/StoredSettings.h"
#include "net/SocksTcpRelay.h"

#include <QDebug>
#include <QDir>
#include <QFile>
#include <QHostAddress>
#include <QRegularExpression>
#include <QSettings>
#include <QStandardPaths>
#include <QSysInfo>
#include <QUrl>
#include <chrono>
#include <mutex>

#ifndef _WIN32
#include <csignal>
#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>
extern char **environ;
#endif

namespace selvane::proxy {

namespace {

using Clock = std::chrono::steady_clock;
constexpr auto kSystemCacheFor = std::chrono::seconds(10);
constexpr int kDesktopLookupMs = 1000;
constexpr int kLocalProbeMs = 300;

QString setting(const char *key)
{
    StoredSettings settings;
    return settings.value(key).toString().trimmed();
}

QString environment(std::initializer_list<const char *> names)
{
    for (const char *name : names) {
        const QString value = qEnvironmentVariable(name).trimmed();
        if (!value.isEmpty())
            return value;
    }
    return {};
}

bool hasSocksScheme(const QString &url)
{
    return url.trimmed().toLower().startsWith("socks");
}

#ifndef _WIN32 // read from the Linux desktops' proxy settings
QString hostPortUrl(const QString &scheme, const QString &host, const QString &port)
{
    if (host.isEmpty())
        return {};
    const QString bare = host.contains("://") ? host.mid(host.indexOf("://") + 3) : host;
    return port.isEmpty() || port == "0" ? scheme + "://" + bare
                                         : scheme + "://" + bare + ":" + port;
}
#endif

// ---- the desktop's settings ----

#ifndef _WIN32
// Runs a command and returns what it prints, within `timeoutMs` (killed after that).
QByteArray runBounded(const QString &program, const QStringList &arguments, int timeoutMs)
{
    int pipeFds[2];
    if (pipe(pipeFds) != 0)
        return {};
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, pipeFds[1], STDOUT_FILENO);
    posix_spawn_file_actions_addclose(&actions, pipeFds[0]);
    posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
    QList<QByteArray> args{QFile::encodeName(program)};
    for (const QString &a : arguments)
        args << a.toLocal8Bit();
    std::vector<char *> argv;
    for (QByteArray &a : args)
        argv.push_back(a.data());
    argv.push_back(nullptr);
    pid_t pid = 0;
    const int spawned = posix_spawn(&pid, argv[0], &actions, nullptr, argv.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    close(pipeFds[1]);
    QByteArray out;
    if (spawned != 0) {
        close(pipeFds[0]);
        return {};
    }
    const auto deadline = Clock::now() + std::chrono::milliseconds(timeoutMs);
    bool finished = false;
    while (!finished && Clock::now() < deadline && out.size() < 65536) {
        pollfd fd{pipeFds[0], POLLIN, 0};
        const int left = int(
            std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now()).count());
        if (poll(&fd, 1, std::max(1, left)) <= 0)
            continue;
        char chunk[4096];
        const ssize_t n = read(pipeFds[0], chunk, sizeof chunk);
        if (n > 0)
            out.append(chunk, n);
        else
            finished = true;
    }
    close(pipeFds[0]);
    if (!finished)
        kill(pid, SIGKILL);
    int status = 0;
    waitpid(pid, &status, 0);
    return finished ? out : QByteArray();
}
#endif

// GNOME: org.gnome.system.proxy in manual mode.
SystemProxy gnomeProxy()
{
    SystemProxy found;
#ifndef _WIN32
    const QString gsettings = QStandardPaths::findExecutable("gsettings");
    if (gsettings.isEmpty())
        return found;
    const QByteArray out =
        runBounded(gsettings, {"list-recursively", "org.gnome.system.proxy"}, kDesktopLookupMs);
    QHash<QString, QString> values;
    static const QRegularExpression line(R"(^org\.gnome\.system\.proxy(\.\w+)? ([\w-]+) (.*)$)");
    for (const QByteArray &raw : out.split('\n')) {
        const QRegularExpressionMatch m = line.match(QString::fromUtf8(raw).trimmed());
        if (m.hasMatch())
            values.insert(m.captured(1).mid(1) + "/" + m.captured(2), m.captured(3));
    }
    const auto text = [&](const QString &key) {
        QString v = values.value(key).trimmed();
        if (v.size() >= 2 && v.startsWith('\'') && v.endsWith('\''))
            v = v.mid(1, v.size() - 2);
        return v;
    };
    if (text("/mode") != "manual")
        return found;
    found.source = "GNOME";
    QString http = hostPortUrl("http", text("http/host"), text("http/port"));
    if (!http.isEmpty() && text("http/use-authentication") == "true" &&
        !text("http/authentication-user").isEmpty()) {
        QUrl u(http);
        u.setUserName(text("http/authentication-user"));
        u.setPassword(text("http/authentication-password"));
        http = u.toString();
    }
    found.http = http;
    found.https = hostPortUrl("http", text("https/host"), text("https/port"));
    found.socks = hostPortUrl("socks5", text("socks/host"), text("socks/port"));
    // ['localhost', '127.0.0.0/8', '::1']
    QString ignore = text("/ignore-hosts");
    ignore.remove('[').remove(']').remove('\'');
    found.noProxy = ignore.split(',', Qt::SkipEmptyParts).join(',').remove(' ');
#endif
    return found;
}

// KDE: kioslaverc's [Proxy Settings] with ProxyType 1 (manual).
SystemProxy kdeProxy()
{
    SystemProxy found;
    const QString path =
        QDir(QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation))
            .filePath("kioslaverc");
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly | QIODevice::Text))
        return found;
    QHash<QString, QString> values;
    bool inSection = false;
    while (!file.atEnd()) {
        const QString line = QString::fromUtf8(file.readLine()).trimmed();
        if (line.startsWith('[')) {
            inSection = line == "[Proxy Settings]";
            continue;
        }
        const qsizetype eq = line.indexOf('=');
        if (inSection && eq > 0)
            values.insert(line.left(eq).trimmed(), line.mid(eq + 1).trimmed());
    }
    if (values.value("ProxyType") != "1")
        return found;
    // "http://host:port", "http://host port" or "host port"
    const auto url = [&](const char *key, const char *scheme) {
        QString v = values.value(key);
        if (v.isEmpty())
            return QString();
        v.replace(' ', ':');
        return v.contains("://") ? v : QString(scheme) + "://" + v;
    };
    found.source = "KDE";
    found.http = url("httpProxy", "http");
    found.https = url("httpsProxy", "http");
    found.socks = url("socksProxy", "socks5");
    if (found.socks.startsWith("socks://"))
        found.socks.replace(0, 5, "socks5");
    found.noProxy = values.value("NoProxyFor");
    return found;
}

// Windows: the Internet Settings of the current user.
SystemProxy windowsProxy()
{
    SystemProxy found;
#ifdef _WIN32
    QSettings registry(
        "HKEY_CURRENT_USER\\Software\\Microsoft\\Windows\\CurrentVersion\\Internet Settings",
        QSettings::NativeFormat);
    if (registry.value("ProxyEnable").toInt() != 1)
        return found;
    found.source = "Windows";
    // "host:port" for every protocol, or "http=host:port;https=host:port;socks=host:port".
    const QString server = registry.value("ProxyServer").toString();
    for (const QString &part : server.split(';', Qt::SkipEmptyParts)) {
        const qsizetype eq = part.indexOf('=');
        const QString kind = eq > 0 ? part.left(eq).toLower() : QString();
        const QString address = part.mid(eq + 1).trimmed();
        if (kind.isEmpty() || kind == "http")
            found.http = "http://" + address;
        if (kind.isEmpty() || kind == "https")
            found.https = "http://" + address;
        if (kind == "socks")
            found.socks = "socks5://" + address;
    }
    found.noProxy = registry.value("ProxyOverride").toString().replace(';', ',');
#endif
    return found;
}

SystemProxy lookUpSystemProxy()
{
    SystemProxy found;
    found.http = environment({"http_proxy", "HTTP_PROXY"});
    found.https = environment({"https_proxy", "HTTPS_PROXY"});
    const QString all = environment({"all_proxy", "ALL_PROXY"});
    found.noProxy = environment({"no_proxy", "NO_PROXY"});
    if (hasSocksScheme(all))
        found.socks = all;
    else if (!all.isEmpty() && found.http.isEmpty())
        found.http = all;
    if (found.https.isEmpty() && !hasSocksScheme(found.http))
        found.https = found.http;
    for (QString *value : {&found.http, &found.https}) {
        if (hasSocksScheme(*value)) {
            if (found.socks.isEmpty())
                found.socks = *value;
            value->clear();
        }
    }
    if (!found.http.isEmpty() || !found.https.isEmpty() || !found.socks.isEmpty()) {
        found.source = "environment";
        return found;
    }
    const QString noProxy = found.noProxy;
    const QString desktop = qEnvironmentVariable("XDG_CURRENT_DESKTOP");
    for (auto lookUp :
         {windowsProxy, desktop.contains("KDE", Qt::CaseInsensitive) ? kdeProxy : gnomeProxy,
          kdeProxy}) {
        found = lookUp();
        if (!found.source.isEmpty()) {
            if (found.noProxy.isEmpty())
                found.noProxy = noProxy;
            return found;
        }
    }
    found.noProxy = noProxy;
    return found;
}

struct Resolved
{
    Mode mode = Mode::Auto;
    QString http;
    QString https;
    QString socks;
    QString noProxy;
};

Resolved resolved()
{
    Resolved r;
    r.mode = mode();
    if (r.mode == Mode::Off)
        return r;
    const SystemProxy system = systemProxy();
    r.noProxy = system.noProxy;
    if (r.mode == Mode::Manual) {
        const QString single = setting("proxy_url");
        r.http = setting("proxy_http_url");
        r.socks = setting("proxy_socks_url");
        if (r.http.isEmpty() && !single.isEmpty() && !hasSocksScheme(single))
            r.http = single;
        if (r.socks.isEmpty() && hasSocksScheme(single))
            r.socks = single;
        r.https = r.http;
        return r;
    }
    r.http = system.http;
    r.https = system.https;
    r.socks = system.socks;
    return r;
}

bool isLoopbackHost(const QString &host)
{
    const QString h = host.trimmed().toLower();
    if (h == "localhost" || h.endsWith(".localhost"))
        return true;
    const QHostAddress address(h.startsWith('[') ? h.mid(1, h.size() - 2) : h);
    return !address.isNull() && address.isLoopback();
}

void logPassedBy(const char *kind, const Server &server, const QString &host)
{
    qWarning().noquote() << "ProxySettings: the" << kind << "proxy" << server.endpoint()
                         << "on this machine is not running; connecting to" << host << "directly";
}

} // namespace

Mode mode()
{
    const QString value = setting("proxy_mode").toLower();
    if (value == "manual")
        return Mode::Manual;
    if (value == "off")
        return Mode::Off;
    return Mode::Auto;
}

QString modeName(Mode mode)
{
    switch (mode) {
    case Mode::Manual:
        return "manual";
    case Mode::Off:
        return "off";
    case Mode::Auto:
        break;
    }
    return "auto";
}

QString Server::url() const
{
    if (!isValid())
        return {};
    QString out = scheme + "://";
    if (!user.isEmpty()) {
        out += QString::fromLatin1(QUrl::toPercentEncoding(user));
        if (!password.isEmpty())
            out += ":" + QString::fromLatin1(QUrl::toPercentEncoding(password));
        out += "@";
    }
    return out + endpoint();
}

QString Server::endpoint() const
{
    const bool v6 = host.contains(':');
    return (v6 ? "[" + host + "]" : host) + ":" + QString::number(port);
}

Server parseServer(const QString &text, bool socks)
{
    Server server;
    QString t = text.trimmed();
    if (t.isEmpty())
        return server;
    if (!t.contains("://"))
        t = (socks ? "socks5://" : "http://") + t;
    const QUrl url(t, QUrl::StrictMode);
    if (!url.isValid() || url.host().isEmpty())
        return server;
    server.scheme = url.scheme().toLower();
    if (server.isSocks() != socks)
        return Server{};
    server.host = url.host();
    const int port = url.port(socks ? 1080 : (server.scheme == "https" ? 443 : 8080));
    if (port <= 0 || port > 65535)
        return Server{};
    server.port = quint16(port);
    server.user = url.userName(QUrl::FullyDecoded);
    server.password = url.password(QUrl::FullyDecoded);
    return server;
}

SystemProxy systemProxy()
{
    static std::mutex mutex;
    static SystemProxy cached;
    static Clock::time_point cachedAt{};
    std::lock_guard lock(mutex);
    if (cachedAt == Clock::time_point{} || Clock::now() - cachedAt > kSystemCacheFor) {
        cached = lookUpSystemProxy();
        cachedAt = Clock::now();
    }
    return cached;
}

bool bypassesProxy(const QString &rawHost, const QString &noProxy)
{
    QString host = rawHost.trimmed().toLower();
    if (host.startsWith('[') && host.endsWith(']'))
        host = host.mid(1, host.size() - 2);
    if (host.isEmpty() || isLoopbackHost(host))
        return true;
    const QHostAddress address(host);
    for (QString entry : noProxy.split(QRegularExpression("[,;\\s]+"), Qt::SkipEmptyParts)) {
        entry = entry.toLower();
        if (entry == "*")
            return true;
        if (entry.startsWith('[')) {
            entry = entry.mid(1, entry.indexOf(']') - 1);
        } else if (entry.count(':') == 1) {
            entry = entry.left(entry.indexOf(':')); // a port on the entry
        }
        if (entry.contains('/')) {
            if (address.isNull())
                continue;
            const auto subnet = QHostAddress::parseSubnet(entry);
            if (!subnet.first.isNull() && address.isInSubnet(subnet))
                return true;
            continue;
        }
        if (entry.startsWith("*."))
            entry = entry.mid(1);
        if (entry.startsWith('.')) {
            if (host.endsWith(entry) || host == entry.mid(1))
                return true;
            continue;
        }
        if (host == entry || (address.isNull() && host.endsWith("." + entry)))
            return true;
        if (!address.isNull() && QHostAddress(entry) == address)
            return true;
    }
    return false;
}

bool isOnThisMachine(const QString &host)
{
    if (isLoopbackHost(host))
        return true;
    const QString name = QSysInfo::machineHostName().toLower();
    return !name.isEmpty() && host.trimmed().toLower() == name;
}

bool isLocalAndNotRunning(const Server &server)
{
    if (!server.isValid() || !isOnThisMachine(server.host))
        return false;
    const SocksTcpRelay::Probe result =
        SocksTcpRelay::probe(server.host.toStdString(), server.port, kLocalProbeMs);
    return result == SocksTcpRelay::Probe::Refused || result == SocksTcpRelay::Probe::Failed;
}

Server socksProxyFor(const QString &host, bool checkRunning)
{
    const Resolved r = resolved();
    if (r.socks.isEmpty() || bypassesProxy(host, r.noProxy))
        return {};
    const Server server = parseServer(r.socks, true);
    if (!server.isValid()) {
        qWarning().noquote() << "ProxySettings: the SOCKS proxy setting is not a usable URL;"
                             << "connecting to" << host << "directly";
        return {};
    }
    if (checkRunning && isLocalAndNotRunning(server)) {
        logPassedBy("SOCKS", server, host);
        return {};
    }
    return server;
}

Server httpProxyFor(const QString &host, bool tls, bool checkRunning)
{
    const Resolved r = resolved();
    const QString url = tls ? r.https : r.http;
    if (url.isEmpty() || bypassesProxy(host, r.noProxy))
        return {};
    const Server server = parseServer(url, false);
    if (!server.isValid())
        return {};
    if (checkRunning && isLocalAndNotRunning(server)) {
        logPassedBy("HTTP", server, host);
        return {};
    }
    return server;
}

QString httpProxyUrl()
{
    const Resolved r = resolved();
    const QString url = !r.https.isEmpty() ? r.https : r.http;
    return parseServer(url, false).url();
}

QString socksEndpoint()
{
    const Server server = parseServer(resolved().socks, true);
    return server.isValid() ? server.endpoint() : QString();
}

} // namespace selvane::proxy
