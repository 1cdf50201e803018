#include "control/ControlToken.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QRandomGenerator>
#include <QStandardPaths>

#ifndef _WIN32
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#endif

namespace selvane::control {

namespace {

constexpr qsizetype kMinTokenBytes = 16;

QByteArray newToken()
{
    quint32 words[8];
    QRandomGenerator::system()->fillRange(words);
    return QByteArray(reinterpret_cast<const char *>(words), sizeof words)
        .toBase64(QByteArray::Base64UrlEncoding | QByteArray::OmitTrailingEquals);
}

// Writes the token to a new file that is the owner's alone from its first moment, then puts it
// in place.
bool writeTokenFile(const QString &path, const QByteArray &token, QString *error)
{
    const QString folder = QFileInfo(path).absolutePath();
    if (!QDir().mkpath(folder)) {
        *error = QStringLiteral("cannot make the folder %1").arg(folder);
        return false;
    }
    const QString temporary = path + QStringLiteral(".new");
#ifndef _WIN32
    const QByteArray native = QFile::encodeName(temporary);
    ::unlink(native.constData());
    const int fd = ::open(native.constData(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600);
    if (fd < 0) {
        *error = QStringLiteral("cannot write %1: %2")
                     .arg(temporary, QString::fromLocal8Bit(std::strerror(errno)));
        return false;
    }
    const QByteArray line = token + '\n';
    const bool written = ::write(fd, line.constData(), size_t(line.size())) == line.size();
    ::close(fd);
    if (!written || ::rename(native.constData(), QFile::encodeName(path).constData()) != 0) {
        *error = QStringLiteral("cannot write %1").arg(path);
        ::unlink(native.constData());
        return false;
    }
#else
    QFile::remove(temporary);
    QFile file(temporary);
    if (!file.open(QIODevice::WriteOnly | QIODevice::NewOnly) || file.write(token + '\n') < 0) {
        *error = QStringLiteral("cannot write %1").arg(temporary);
        return false;
    }
    file.setPermissions(QFile::ReadOwner | QFile::WriteOwner);
    file.close();
    QFile::remove(path);
    if (!QFile::rename(temporary, path)) {
        *error = QStringLiteral("cannot write %1").arg(path);
        return false;
    }
#endif
    return true;
}

} // namespace

QString tokenFilePath()
{
    const QString config = QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation);
    return QDir(config).filePath(QStringLiteral("Ostrel/selvane_control_token"));
}

bool loadToken(Token *token, QString *error)
{
    const QByteArray fromEnvironment = qgetenv("SELVANE_CONTROL_TOKEN").trimmed();
    if (!fromEnvironment.isEmpty()) {
        if (fromEnvironment.size() < kMinTokenBytes) {
            *error = QStringLiteral("SELVANE_CONTROL_TOKEN must be at least %1 characters")
                         .arg(kMinTokenBytes);
            return false;
        }
        *token = {fromEnvironment, {}};
        return true;
    }
    const QString path = tokenFilePath();
    QFile file(path);
    if (file.exists()) {
        // Kept from an earlier start; a file others could read is closed to them first.
        const QFileDevice::Permissions others =
            QFile::ReadGroup | QFile::WriteGroup | QFile::ReadOther | QFile::WriteOther;
        if (file.permissions() & others)
            file.setPermissions(QFile::ReadOwner | QFile::WriteOwner);
        if (!file.open(QIODevice::ReadOnly)) {
            *error = QStringLiteral("cannot read %1").arg(path);
            return false;
        }
        const QByteArray kept = file.read(4096).trimmed();
        if (kept.size() >= kMinTokenBytes) {
            *token = {kept, path};
            return true;
        }
    }
    const QByteArray made = newToken();
    if (!writeTokenFile(path, made, error))
        return false;
    *token = {made, path};
    return true;
}

} // namespace selvane::control
