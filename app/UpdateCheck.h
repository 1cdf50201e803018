#pragma once

// The update check of the application shell. The vendor's version manifest is fetched over
// HTTPS (its address is the "update/manifestUrl" setting; empty: no check):
//
//   {"version": "0.2.0", "url": "https://.../Selvane_Setup_0.2.0.exe", "size": 48213504,
//    "sha256": "9f86d0..."}
//
// A newer version is offered (updateAvailable); on request its installer is downloaded into a
// folder under a name that replaces no file, checked against the size and SHA-256 the manifest
// gives, and only then handed over (downloaded). A manifest that is not JSON, has no version or
// names no HTTPS installer is ignored with a log line; an unreachable server only logs.
// SELVANE_TLS_CA_FILE adds certificate authorities (a private update server).
//
// Owns: its network access and the file being downloaded. GUI thread; nothing waits: every
// transfer is asynchronous and bounded by a timeout. Emits updateAvailable, downloadProgress,
// downloaded, downloadFailed.

#include <QByteArray>
#include <QCryptographicHash>
#include <QObject>
#include <QString>
#include <QUrl>
#include <memory>
#include <optional>

class QFile;
class QNetworkAccessManager;
class QNetworkReply;
class QNetworkRequest;

namespace selvane {

class UpdateCheck : public QObject
{
    Q_OBJECT

public:
    struct Offer
    {
        QString version;
        QUrl installer;
        qint64 sizeBytes = 0;
        QByteArray sha256; // lower-case hex
    };

    // The manifest setting's key.
    static constexpr auto kManifestUrlKey = "update/manifestUrl";
    // A transfer that brings nothing for this long is given up.
    static constexpr int kTransferTimeoutMs = 15000;

    explicit UpdateCheck(const QString &currentVersion, QObject *parent = nullptr);
    ~UpdateCheck() override;

    // Fetches the manifest; updateAvailable follows when it offers a newer version.
    void check(const QUrl &manifest);
    // Downloads the offer's installer into `folder`.
    void download(const Offer &offer, const QString &folder);
    bool isDownloading() const { return m_download != nullptr; }

    // The manifest's offer; empty, with the reason, when it cannot be one.
    static std::optional<Offer> parseManifest(const QByteArray &json, QString *why);
    // Dotted versions compared number by number ("0.10.0" is newer than "0.9.2").
    static bool isNewer(const QString &offered, const QString &current);
    // Where the installer goes: "Selvane_Setup_<version>.exe" in `folder`, or beside it under a
    // free name.
    static QString installerPath(const QString &folder, const QString &version);

signals:
    void updateAvailable(selvane::UpdateCheck::Offer offer);
    void downloadProgress(qint64 receivedBytes, qint64 totalBytes);
    void downloaded(QString path);
    void downloadFailed(QString reason);

private:
    QNetworkRequest requestFor(const QUrl &url) const;
    void onManifest(QNetworkReply *reply);
    void onDownloadData();
    void onDownloadFinished();
    void failDownload(const QString &reason);

    const QString m_currentVersion;
    QNetworkAccessManager *m_network = nullptr;
    QNetworkReply *m_download = nullptr;
    std::unique_ptr<QFile> m_file; // the download while it comes: "<installer>.part"
    QString m_target;
    Offer m_offer;
    QCryptographicHash m_hash{QCryptographicHash::Sha256};
    qint64 m_received = 0;
};

} // namespace selvane

Q_DECLARE_METATYPE(selvane::UpdateCheck::Offer)
