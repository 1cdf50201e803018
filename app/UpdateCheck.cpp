#include "app/UpdateCheck.h"

#include <QDebug>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonDocument>
#include <QJsonObject>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QNetworkRequest>
#include <QRegularExpression>
#include <QSslCertificate>
#include <QSslConfiguration>

namespace selvane {

namespace {

// A manifest is a few hundred bytes; more is not one.
constexpr qint64 kLargestManifestBytes = 64 * 1024;

QStringList versionParts(const QString &version)
{
    return version.trimmed().split('.');
}

} // namespace

UpdateCheck::UpdateCheck(const QString &currentVersion, QObject *parent)
    : QObject(parent), m_currentVersion(currentVersion), m_network(new QNetworkAccessManager(this))
{
    qRegisterMetaType<Offer>();
}

UpdateCheck::~UpdateCheck()
{
    if (m_download) {
        m_download->abort();
        m_download->deleteLater();
    }
    if (m_file)
        m_file->remove();
}

bool UpdateCheck::isNewer(const QString &offered, const QString &current)
{
    const QStringList a = versionParts(offered);
    const QStringList b = versionParts(current);
    for (qsizetype i = 0; i < std::max(a.size(), b.size()); ++i) {
        const int x = a.value(i, "0").toInt();
        const int y = b.value(i, "0").toInt();
        if (x != y)
            return x > y;
    }
    return false;
}

std::optional<UpdateCheck::Offer> UpdateCheck::parseManifest(const QByteArray &json, QString *why)
{
    QString unused;
    if (!why)
        why = &unused;
    QJsonParseError error{};
    const QJsonDocument document = QJsonDocument::fromJson(json, &error);
    if (error.error != QJsonParseError::NoError || !document.isObject()) {
        *why = QStringLiteral("not a JSON object (%1)").arg(error.errorString());
        return std::nullopt;
    }
    const QJsonObject o = document.object();
    Offer offer;
    offer.version = o.value("version").toString().trimmed();
    static const QRegularExpression dotted(QStringLiteral("^\\d+(\\.\\d+)*$"));
    if (!dotted.match(offer.version).hasMatch()) {
        *why = QStringLiteral("no \"version\" of dotted numbers");
        return std::nullopt;
    }
    offer.installer = QUrl(o.value("url").toString());
    if (!offer.installer.isValid() || offer.installer.scheme() != QLatin1String("https")) {
        *why = QStringLiteral("no \"url\" of an installer over HTTPS");
        return std::nullopt;
    }
    offer.sizeBytes = qint64(o.value("size").toDouble(0));
    offer.sha256 = o.value("sha256").toString().trimmed().toLower().toLatin1();
    static const QRegularExpression hex(QStringLiteral("^[0-9a-f]{64}$"));
    if (offer.sizeBytes <= 0 || !hex.match(QString::fromLatin1(offer.sha256)).hasMatch()) {
        *why = QStringLiteral("no \"size\" and \"sha256\" to check the installer against");
        return std::nullopt;
    }
    return offer;
}

QString UpdateCheck::installerPath(const QString &folder, const QString &version)
{
    const QDir dir(folder);
    const QString base = QStringLiteral("Selvane_Setup_%1").arg(version);
    QString path = dir.filePath(base + ".exe");
    for (int n = 1; QFileInfo::exists(path) || QFileInfo::exists(path + ".part"); ++n)
        path = dir.filePath(QStringLiteral("%1_%2.exe").arg(base).arg(n));
    return path;
}

QNetworkRequest UpdateCheck::requestFor(const QUrl &url) const
{
    QNetworkRequest request(url);
    request.setTransferTimeout(kTransferTimeoutMs);
    request.setAttribute(QNetworkRequest::RedirectPolicyAttribute,
                         QNetworkRequest::NoLessSafeRedirectPolicy);
    const QByteArray caFile = qgetenv("SELVANE_TLS_CA_FILE");
    if (!caFile.isEmpty()) {
        QSslConfiguration tls = QSslConfiguration::defaultConfiguration();
        tls.addCaCertificates(QSslCertificate::fromPath(QString::fromLocal8Bit(caFile)));
        request.setSslConfiguration(tls);
    }
    return request;
}

void UpdateCheck::check(const QUrl &manifest)
{
    if (!manifest.isValid() || manifest.scheme() != QLatin1String("https")) {
        qWarning().noquote() << "UpdateCheck: the manifest address is not HTTPS; no check:"
                             << manifest.toDisplayString(QUrl::RemoveUserInfo);
        return;
    }
    QNetworkReply *reply = m_network->get(requestFor(manifest));
    connect(reply, &QNetworkReply::downloadProgress, reply, [reply](qint64 received, qint64) {
        if (received > kLargestManifestBytes)
            reply->abort();
    });
    connect(reply, &QNetworkReply::finished, this, [this, reply] { onManifest(reply); });
}

void UpdateCheck::onManifest(QNetworkReply *reply)
{
    reply->deleteLater();
    const QString where = reply->url().toDisplayString(QUrl::RemoveUserInfo | QUrl::RemoveQuery);
    if (reply->error() != QNetworkReply::NoError) {
        qInfo().noquote() << "UpdateCheck: no manifest from" << where + ":" << reply->errorString();
        return;
    }
    QString why;
    const std::optional<Offer> offer = parseManifest(reply->readAll(), &why);
    if (!offer) {
        qWarning().noquote() << "UpdateCheck: the manifest at" << where << "is ignored:" << why;
        return;
    }
    if (!isNewer(offer->version, m_currentVersion)) {
        qInfo().noquote() << "UpdateCheck: up to date (" + m_currentVersion + ", the manifest says"
                          << offer->version + ")";
        return;
    }
    qInfo().noquote() << "UpdateCheck: version" << offer->version << "is available";
    emit updateAvailable(*offer);
}

void UpdateCheck::download(const Offer &offer, const QString &folder)
{
    if (m_download)
        return;
    QDir().mkpath(folder);
    m_offer = offer;
    m_target = installerPath(folder, offer.version);
    m_file = std::make_unique<QFile>(m_target + ".part");
    if (!m_file->open(QIODevice::WriteOnly)) {
        const QString reason = m_file->errorString();
        m_file.reset();
        emit downloadFailed(reason);
        return;
    }
    m_hash.reset();
    m_received = 0;
    m_download = m_network->get(requestFor(offer.installer));
    connect(m_download, &QNetworkReply::readyRead, this, &UpdateCheck::onDownloadData);
    connect(m_download, &QNetworkReply::finished, this, &UpdateCheck::onDownloadFinished);
}

void UpdateCheck::onDownloadData()
{
    const QByteArray data = m_download->readAll();
    m_received += data.size();
    if (m_received > m_offer.sizeBytes) {
        failDownload(tr("the download is larger than the manifest says"));
        return;
    }
    m_hash.addData(data);
    if (m_file->write(data) != data.size()) {
        failDownload(m_file->errorString());
        return;
    }
    emit downloadProgress(m_received, m_offer.sizeBytes);
}

void UpdateCheck::onDownloadFinished()
{
    if (!m_download)
        return; // already given up
    if (m_download->bytesAvailable() > 0)
        onDownloadData();
    if (!m_download)
        return;
    if (m_download->error() != QNetworkReply::NoError) {
        failDownload(m_download->errorString());
        return;
    }
    if (m_received != m_offer.sizeBytes) {
        failDownload(tr("the download has %1 bytes, the manifest says %2")
                         .arg(m_received)
                         .arg(m_offer.sizeBytes));
        return;
    }
    if (m_hash.result().toHex() != m_offer.sha256) {
        failDownload(tr("the download's SHA-256 is not the one the manifest gives"));
        return;
    }
    m_file->close();
    if (!m_file->rename(m_target)) {
        failDownload(m_file->errorString());
        return;
    }
    m_file.reset();
    m_download->deleteLater();
    m_download = nullptr;
    qInfo().noquote() << "UpdateCheck: installer downloaded and checked:"
                      << QDir::toNativeSeparators(m_target);
    emit downloaded(m_target);
}

void UpdateCheck::failDownload(const QString &reason)
{
    if (m_download) {
        m_download->disconnect(this);
        m_download->abort();
        m_download->deleteLater();
        m_download = nullptr;
    }
    if (m_file) {
        m_file->close();
        m_file->remove(); // nothing unchecked is left behind
        m_file.reset();
    }
    qWarning().noquote() << "UpdateCheck: the installer download failed:" << reason;
    emit downloadFailed(reason);
}

} // namespace selvane
