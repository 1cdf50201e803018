#include "panels/OutputFolder.h"

#include "media/StoredSettings.h"

#include <QDir>
#include <QFileInfo>
#include <QSettings>
#include <QStandardPaths>

namespace selvane {

QString defaultOutputDirectory()
{
    QString base = QStandardPaths::writableLocation(QStandardPaths::MoviesLocation);
    if (base.isEmpty())
        base = QDir::homePath();
    return QDir(base).filePath("Selvane");
}

QString recordingDirectory()
{
    StoredSettings settings;
    const QString filePath = settings.value("output/filePath").toString().trimmed();
    if (filePath.isEmpty() || filePath.contains("://"))
        return defaultOutputDirectory();
    return QFileInfo(filePath).absolutePath();
}

} // namespace selvane
