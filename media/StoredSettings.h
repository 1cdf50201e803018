#pragma once

// The operator's settings store, the one place that names it: the "Ostrel"/"Selvane" store of
// the platform (~/.config/Ostrel/Selvane.conf on Linux, HKCU\Software\Ostrel\Selvane on
// Windows). Open one where a setting is read or written and let it go; QSettings keeps the
// store consistent across instances and threads.

#include <QSettings>

namespace selvane {

class StoredSettings : public QSettings
{
public:
    StoredSettings() : QSettings(QStringLiteral("Ostrel"), QStringLiteral("Selvane")) {}
};

} // namespace selvane
