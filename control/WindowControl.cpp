#include "control/WindowControl.h"

#include "control/ControlServer.h"
#include "engine/Engine.h"
#include "media/StoredSettings.h"

#include <QDebug>
#include <QHostAddress>
#include <QSettings>
#include <cstdio>

namespace selvane {

ControlServer *startWindowControl(Engine &engine, const WindowControlOptions &options,
                                  QObject *parent)
{
    const StoredSettings settings;
    int port = options.port;
    QString bind = options.bind;
    if (port == 0) {
        port = settings.value("control/port", 0).toInt();
        if (bind.isEmpty())
            bind = settings.value("control/bind").toString().trimmed();
    }
    if (port <= 0 || port > 65535)
        return nullptr;
    const QHostAddress address(bind.isEmpty() ? QStringLiteral("127.0.0.1") : bind);
    auto *control = new ControlServer(&engine, parent);
    QString error;
    if (address.isNull() || !control->listen(address, quint16(port), &error)) {
        if (address.isNull())
            error = QStringLiteral("\"%1\" is not an IP address").arg(bind);
        std::fprintf(stderr, "selvane: control: %s\n", qPrintable(error));
        qWarning().noquote() << "ControlServer:" << error;
        delete control;
        return nullptr;
    }
    std::fprintf(stdout, "%s\n", qPrintable(control->startLine()));
    std::fflush(stdout);
    qInfo().noquote() << "ControlServer:" << control->startLine();
    return control;
}

} // namespace selvane
