#pragma once

// A real browser for the tests of the web panel: tests/web/browser.py (headless Chromium under
// chromedriver, Debian's python3-selenium) run as a child, one JSON command a line.

#include <QDir>
#include <QElapsedTimer>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QString>

namespace testsupport {

class Browser
{
public:
    ~Browser() { quit(); }

    // Starts Chromium with this language preferred; false with the reason in error().
    bool start(const QString &language = QStringLiteral("en-US"))
    {
        // Where tests/web/browser.py is (CTest says; see tests/CMakeLists.txt).
        const QString script = qEnvironmentVariable("SELVANE_BROWSER_SCRIPT");
        m_process.setProcessChannelMode(QProcess::SeparateChannels);
        // Debian's python has the driver module; a python of the user's own may not.
        m_process.start(QStringLiteral("/usr/bin/python3"), {script, language});
        if (!m_process.waitForStarted(5000)) {
            m_error = QStringLiteral("python3 does not start");
            return false;
        }
        const QJsonObject hello = readAnswer(60000);
        if (!hello.value("ok").toBool()) {
            m_error = hello.value("error").toString() + " " +
                      QString::fromUtf8(m_process.readAllStandardError().right(2000));
            return false;
        }
        return true;
    }
    QString error() const { return m_error; }

    // One command; its value, or an invalid value with error() set.
    QJsonValue run(QJsonObject command, int timeoutMs = 20000)
    {
        m_process.write(QJsonDocument(command).toJson(QJsonDocument::Compact) + '\n');
        const QJsonObject answer = readAnswer(timeoutMs);
        if (!answer.value("ok").toBool()) {
            m_error = command.value("op").toString() + ": " + answer.value("error").toString();
            return QJsonValue(QJsonValue::Undefined);
        }
        m_error.clear();
        return answer.value("value");
    }
    bool ok(const QJsonObject &command, int timeoutMs = 20000)
    {
        return !run(command, timeoutMs).isUndefined();
    }
    bool open(const QString &url) { return ok({{"op", "open"}, {"url", url}}); }
    bool size(int width, int height) { return ok({{"op", "size"}, {"w", width}, {"h", height}}); }
    bool click(const QString &css) { return ok({{"op", "click"}, {"css", css}}); }
    bool keys(const QString &css, const QStringList &keys)
    {
        return ok({{"op", "keys"}, {"css", css}, {"keys", QJsonArray::fromStringList(keys)}});
    }
    // Keys to whatever has the focus, as a keyboard would.
    bool press(const QStringList &keys)
    {
        return ok({{"op", "press"}, {"keys", QJsonArray::fromStringList(keys)}});
    }
    bool waitVisible(const QString &css, int ms = 5000)
    {
        return ok({{"op", "wait"}, {"css", css}, {"ms", ms}}, ms + 5000);
    }
    QString text(const QString &css) { return run({{"op", "text"}, {"css", css}}).toString(); }
    QJsonValue js(const QString &script) { return run({{"op", "js"}, {"script", script}}); }
    bool shot(const QString &path) { return ok({{"op", "shot"}, {"path", path}}); }
    // Console entries since the last call: {"level", "message"}.
    QJsonArray log() { return run({{"op", "log"}}).toArray(); }

    void quit()
    {
        if (m_process.state() == QProcess::NotRunning)
            return;
        m_process.write("{\"op\": \"quit\"}\n");
        if (!m_process.waitForFinished(15000)) {
            m_process.kill();
            m_process.waitForFinished(5000);
        }
    }

private:
    QJsonObject readAnswer(int timeoutMs)
    {
        QElapsedTimer timer;
        timer.start();
        while (!m_process.canReadLine() && timer.elapsed() < timeoutMs &&
               m_process.state() == QProcess::Running)
            m_process.waitForReadyRead(100);
        if (!m_process.canReadLine())
            return {{"ok", false},
                    {"error", m_process.state() == QProcess::Running
                                  ? QStringLiteral("no answer within %1 ms").arg(timeoutMs)
                                  : QStringLiteral("the browser's driver ended")}};
        return QJsonDocument::fromJson(m_process.readLine()).object();
    }

    QProcess m_process;
    QString m_error;
};

} // namespace testsupport
