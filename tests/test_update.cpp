// The update check against a real HTTPS server on loopback (nginx) with a certificate authority
// of the test's own: a newer version is offered in the status bar's notice and, on a click,
// downloaded whole and checked; a download that does not match its manifest is refused and
// removed; manifests that are not JSON, have no version or offer nothing newer are ignored with
// a log line; and an unreachable or silent server costs the window nothing.

#include "GuiSupport.h"
#include "app/UpdateNotice.h"

#include <QCryptographicHash>
#include <QLabel>
#include <QPushButton>
#include <QRandomGenerator>
#include <QSignalSpy>
#include <QTcpServer>

using namespace selvane;
using namespace testsupport;

namespace {

// nginx serving a folder over HTTPS, its certificate signed by a certificate authority made now.
class HttpsServer
{
public:
    ~HttpsServer()
    {
        m_process.kill();
        m_process.waitForFinished(3000);
    }
    QString www() const { return m_dir.filePath("www"); }
    QString authority() const { return m_dir.filePath("ca.pem"); }
    QString url(const QString &file) const
    {
        return QStringLiteral("https://127.0.0.1:%1/%2").arg(m_port).arg(file);
    }
    bool start()
    {
        const QDir dir(m_dir.path());
        dir.mkpath("www");
        dir.mkpath("logs");
        QFile ext(dir.filePath("server.ext"));
        if (!ext.open(QIODevice::WriteOnly))
            return false;
        ext.write("subjectAltName=IP:127.0.0.1,DNS:localhost\n");
        ext.close();
        const QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
        const auto openssl = [&](const QStringList &args) {
            return runProcess("openssl", args, env).exitCode == 0;
        };
        if (!openssl({"req", "-x509", "-newkey", "rsa:2048", "-nodes", "-days", "1", "-subj",
                      "/CN=Selvane Test Authority", "-keyout", dir.filePath("ca.key"), "-out",
                      authority()}) ||
            !openssl({"req", "-newkey", "rsa:2048", "-nodes", "-subj", "/CN=127.0.0.1", "-keyout",
                      dir.filePath("server.key"), "-out", dir.filePath("server.csr")}) ||
            !openssl({"x509", "-req", "-days", "1", "-in", dir.filePath("server.csr"), "-CA",
                      authority(), "-CAkey", dir.filePath("ca.key"), "-CAcreateserial", "-out",
                      dir.filePath("server.pem"), "-extfile", ext.fileName()}))
            return false;
        m_port = freeTcpPort();
        QFile conf(dir.filePath("nginx.conf"));
        if (!conf.open(QIODevice::WriteOnly))
            return false;
        conf.write(QStringLiteral("daemon off; master_process off; worker_processes 1;\n"
                                  "pid %1/nginx.pid; error_log %1/logs/error.log warn;\n"
                                  "events { worker_connections 64; }\n"
                                  "http { access_log off; server { listen 127.0.0.1:%2 ssl;\n"
                                  "  ssl_certificate %1/server.pem;\n"
                                  "  ssl_certificate_key %1/server.key; root %1/www; } }\n")
                       .arg(m_dir.path())
                       .arg(m_port)
                       .toUtf8());
        conf.close();
        m_process.start("nginx", {"-c", conf.fileName(), "-p", m_dir.path(), "-e",
                                  dir.filePath("logs/error.log")});
        if (!m_process.waitForStarted(5000))
            return false;
        return QTest::qWaitFor(
            [&] {
                QTcpSocket probe;
                probe.connectToHost("127.0.0.1", m_port);
                return probe.waitForConnected(200);
            },
            5000);
    }

private:
    QTemporaryDir m_dir;
    QProcess m_process;
    quint16 m_port = 0;
};

void write(const QString &path, const QByteArray &bytes)
{
    QFile file(path);
    if (file.open(QIODevice::WriteOnly))
        file.write(bytes);
}

// The longest the event loop went without running a 10 ms timer while `during` ran.
qint64 longestStallMs(qint64 forMs, const std::function<void()> &during)
{
    QElapsedTimer clock;
    clock.start();
    qint64 last = 0;
    qint64 longest = 0;
    QTimer beat;
    QObject::connect(&beat, &QTimer::timeout, [&] {
        longest = std::max(longest, clock.elapsed() - last);
        last = clock.elapsed();
    });
    beat.start(10);
    during();
    QTest::qWait(int(forMs));
    return longest;
}

} // namespace

class TestUpdate : public QObject
{
    Q_OBJECT

    HttpsServer m_server;
    QByteArray m_installer;
    QTemporaryDir m_downloads;

    QByteArray manifest(const QString &version, const QByteArray &sha256) const
    {
        return QStringLiteral(R"({"version": "%1", "url": "%2", "size": %3, "sha256": "%4"})")
            .arg(version, m_server.url("setup.exe"))
            .arg(m_installer.size())
            .arg(QString::fromLatin1(sha256))
            .toUtf8();
    }

private slots:
    void initTestCase()
    {
        QVERIFY(m_server.start());
        qputenv("SELVANE_TLS_CA_FILE", m_server.authority().toLocal8Bit());
        m_installer.resize(3 * 1024 * 1024 + 17);
        QRandomGenerator random(11);
        for (char &byte : m_installer)
            byte = char(random.bounded(256));
        const QByteArray sha = QCryptographicHash::hash(m_installer, QCryptographicHash::Sha256);
        write(m_server.www() + "/setup.exe", m_installer);
        write(m_server.www() + "/newer.json", manifest("9.0.0", sha.toHex()));
        write(m_server.www() + "/corrupt.json", manifest("9.0.1", QByteArray(64, 'a')));
        write(m_server.www() + "/older.json", manifest("0.0.9", sha.toHex()));
        write(m_server.www() + "/html.json", "<html><body>Not found</body></html>");
        write(m_server.www() + "/noversion.json",
              QStringLiteral(R"({"url": "%1"})").arg(m_server.url("setup.exe")).toUtf8());
    }

    void newerVersionIsOfferedAndDownloadedWhole()
    {
        QWidget window;
        UpdateCheck check("0.1.0");
        auto *notice = new UpdateNotice(&check, m_downloads.path(), &window);
        window.show();
        check.check(QUrl(m_server.url("newer.json")));
        QTRY_VERIFY_WITH_TIMEOUT(notice->isVisible(), 10000);
        auto *label = notice->findChild<QLabel *>();
        QCOMPARE(label->text(), QString("Selvane 9.0.0 is available."));
        QSignalSpy done(&check, &UpdateCheck::downloaded);
        QTest::mouseClick(named<QPushButton>(notice, "Download the update"), Qt::LeftButton);
        QVERIFY(done.wait(20000));
        const QString path = done.first().first().toString();
        QCOMPARE(QFileInfo(path).fileName(), QString("Selvane_Setup_9.0.0.exe"));
        QCOMPARE(readAll(path), m_installer);
        QVERIFY(label->text().contains(QDir::toNativeSeparators(path)));
        // A second download never replaces the first.
        check.download(
            UpdateCheck::parseManifest(readAll(m_server.www() + "/newer.json"), nullptr).value(),
            m_downloads.path());
        QVERIFY(done.wait(20000));
        QCOMPARE(QFileInfo(done.last().first().toString()).fileName(),
                 QString("Selvane_Setup_9.0.0_1.exe"));
        QCOMPARE(readAll(path), m_installer);
    }

    void downloadThatIsNotTheManifestsIsRefused()
    {
        UpdateCheck check("0.1.0");
        QSignalSpy offered(&check, &UpdateCheck::updateAvailable);
        check.check(QUrl(m_server.url("corrupt.json")));
        QVERIFY(offered.wait(10000));
        QSignalSpy failed(&check, &UpdateCheck::downloadFailed);
        QTemporaryDir folder;
        check.download(offered.first().first().value<UpdateCheck::Offer>(), folder.path());
        QVERIFY(failed.wait(20000));
        QVERIFY2(failed.first().first().toString().contains("SHA-256"),
                 qPrintable(failed.first().first().toString()));
        QVERIFY(QDir(folder.path()).isEmpty()); // nothing unchecked is left behind
    }

    void manifestsThatOfferNothingAreIgnored_data()
    {
        QTest::addColumn<QString>("file");
        QTest::addColumn<QString>("logged");
        QTest::newRow("not JSON") << "html.json"
                                  << "is ignored: not a JSON object";
        QTest::newRow("no version") << "noversion.json"
                                    << "is ignored: no \"version\"";
        QTest::newRow("not HTTPS") << ""
                                   << "the manifest address is not HTTPS"; // an http:// address
    }

    void manifestsThatOfferNothingAreIgnored()
    {
        QFETCH(QString, file);
        QFETCH(QString, logged);
        WarningCapture warnings;
        UpdateCheck check("0.1.0");
        QSignalSpy offered(&check, &UpdateCheck::updateAvailable);
        check.check(file.isEmpty() ? QUrl(m_server.url("newer.json").replace("https:", "http:"))
                                   : QUrl(m_server.url(file)));
        QTRY_VERIFY_WITH_TIMEOUT(warnings.contains(logged), 10000);
        QTest::qWait(300);
        QCOMPARE(offered.count(), 0);
    }

    void upToDateOffersNothing()
    {
        UpdateCheck check("0.1.0");
        QSignalSpy offered(&check, &UpdateCheck::updateAvailable);
        check.check(QUrl(m_server.url("older.json")));
        QVERIFY(!offered.wait(2000));
        QVERIFY(UpdateCheck::isNewer("0.10.0", "0.9.2"));
        QVERIFY(!UpdateCheck::isNewer("1.0", "1.0.0"));
    }

    void unreachableServersCostTheWindowNothing()
    {
        // A port nobody listens on, and a server that accepts and never answers.
        QTcpServer silent;
        QVERIFY(silent.listen(QHostAddress::LocalHost));
        for (const quint16 port : {freeTcpPort(), silent.serverPort()}) {
            UpdateCheck check("0.1.0");
            QSignalSpy offered(&check, &UpdateCheck::updateAvailable);
            const qint64 stall = longestStallMs(1500, [&] {
                check.check(QUrl(QStringLiteral("https://127.0.0.1:%1/m.json").arg(port)));
            });
            // (a blocking wait would hold it for the whole transfer timeout, 15 s)
            QVERIFY2(stall < 400, qPrintable(QString::number(stall)));
            QCOMPARE(offered.count(), 0);
        }
    }
};

QTEST_MAIN(TestUpdate)
#include "test_update.moc"
