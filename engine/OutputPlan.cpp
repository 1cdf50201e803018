#include "engine/OutputPlan.h"

#include "output/EncodeProfiles.h"

namespace selvane {

namespace {

QString nameOf(const QString &profile)
{
    return profiles::isDefault(profile) ? QString::fromLatin1(profiles::kDefaultName) : profile;
}

} // namespace

std::vector<PlannedEncode> planEncodes(const EncoderSettings &settings, QSize programSize)
{
    std::vector<PlannedEncode> plan;
    const auto encodeFor = [&](const QString &name) -> PlannedEncode & {
        for (PlannedEncode &encode : plan)
            if (encode.source != PlannedEncode::Source::Channel && encode.profile == name)
                return encode;
        const EncodeProfile profile =
            profiles::find(settings, name).value_or(profiles::defaultProfile(settings));
        PlannedEncode encode;
        encode.source =
            profile.multiview ? PlannedEncode::Source::Multiview : PlannedEncode::Source::Program;
        encode.profile = name;
        encode.settings = profiles::settingsFor(settings, profile);
        encode.size = profiles::sizeFor(profile, programSize);
        plan.push_back(std::move(encode));
        return plan.back();
    };
    if (settings.fileEnabled && !settings.filePath.trimmed().isEmpty()) {
        PlannedEncode &encode = encodeFor(nameOf(settings.fileProfile));
        encode.recording = true;
        encode.settings.fileEnabled = true;
        encode.settings.filePath = settings.filePath;
        encode.settings.twinFilePath = settings.twinFilePath;
    }
    for (int i = 0; i < settings.streamTargets.size(); ++i) {
        PlannedEncode &encode = encodeFor(nameOf(settings.streamTargets[i].profile));
        encode.settings.streamTargets << settings.streamTargets[i];
        encode.targets.push_back(i);
    }
    for (int i = 0; i < settings.isoRecordings.size(); ++i) {
        const IsoRecording &iso = settings.isoRecordings[i];
        const EncodeProfile profile =
            profiles::find(settings, iso.profile).value_or(profiles::defaultProfile(settings));
        PlannedEncode encode;
        encode.source = PlannedEncode::Source::Channel;
        encode.channel = iso.channel;
        encode.profile = nameOf(iso.profile);
        encode.settings = profiles::settingsFor(settings, profile);
        encode.settings.fileEnabled = true;
        encode.settings.filePath = iso.path.trimmed().isEmpty()
                                       ? profiles::isoPathBeside(settings.filePath, iso.channel)
                                       : iso.path.trimmed();
        encode.size = profiles::sizeFor(profile, programSize);
        encode.iso = i;
        plan.push_back(std::move(encode));
    }
    return plan;
}

} // namespace selvane
