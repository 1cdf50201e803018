#include "show/ShowLoader.h"

#include "engine/Engine.h"

#include <QCoreApplication>
#include <QFile>

namespace selvane {

bool readScheduleFile(const QString &path, ProgramArrangement *arrangement, QString *error,
                      QStringList *warnings)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        *error = QCoreApplication::translate("selvane", "Unable to open the file. %1").arg(path);
        return false;
    }
    *arrangement = arrangement::fromJson(file.readAll(), error, warnings);
    if (!error->isEmpty())
        *error = path + ": " + *error; // where, then what
    return error->isEmpty();
}

bool applyShowOptions(Engine &engine, const ShowOptions &options, QString *error)
{
    if (options.failover.enabled) {
        if (const Problem problem = engine.setFailover(options.failover)) {
            *error = problemText(problem);
            return false;
        }
    }
    for (auto it = options.channelVolumes.cbegin(); it != options.channelVolumes.cend(); ++it)
        engine.setChannelVolume(it.key(), float(it.value()));
    engine.setProgramVolume(float(options.programVolume));
    engine.setProgramGain(float(options.programGainPercent / 100.0));
    engine.setOutputSize({options.outputSize.isValid(), options.outputSize});
    if (const Problem problem = engine.setOutputTimes(options.outputTimes)) {
        *error = problemText(problem);
        return false;
    }
    engine.setScheduleTransition(options.scheduleTransition);
    for (const TextOverlayData &text : options.texts)
        engine.setTextOverlay(text);
    for (const MediaOverlayRecord &record : options.media)
        engine.setMediaOverlay(record);
    engine.cutTo(options.baseChannel);
    for (auto it = options.channels.cbegin(); it != options.channels.cend(); ++it) {
        engine.setChannelLoop(it.key(), true);
        engine.setChannelSource(it.key(), it.value(), options.microphones.value(it.key()));
    }
    return true;
}

bool loadShow(Engine &engine, const ShowOptions &options, QStringList *warnings, QString *error)
{
    if (!options.scheduleFile.isEmpty()) {
        ProgramArrangement arrangement;
        if (!readScheduleFile(options.scheduleFile, &arrangement, error, warnings))
            return false;
        const arrangement::Validation check = engine.loadSchedule(arrangement);
        if (!check.ok) {
            *error = options.scheduleFile + ": " + check.title + ": " + check.message;
            return false;
        }
    }
    return applyShowOptions(engine, options, error) &&
           (options.scheduleFile.isEmpty() || engine.startSchedule(error));
}

} // namespace selvane
