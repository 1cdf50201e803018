#include "cli/ProfileOptions.h"

#include "output/EncodeProfiles.h"
#include "output/StreamUrl.h"

#include <QCommandLineParser>
#include <QCoreApplication>

namespace selvane {

namespace {
// lupdate files these texts under the context "selvane" (the namespace of this helper).
QString tr(const char *text)
{
    return QCoreApplication::translate("selvane", text);
}

EncodeProfile *profileNamed(EncoderSettings &out, const QString &name)
{
    for (EncodeProfile &profile : out.profiles)
        if (profile.name == name)
            return &profile;
    return nullptr;
}

bool known(const EncoderSettings &out, const QString &name)
{
    return profiles::isDefault(name) ||
           std::any_of(out.profiles.begin(), out.profiles.end(),
                       [&](const EncodeProfile &p) { return p.name == name; });
}

} // namespace

void addProfileOptions(QCommandLineParser &parser)
{
    parser.addOption({"profile",
                      tr("Define an encode profile: its name (letters, digits, - and _), size, "
                         "frame rate, kbit/s and preset (performance, balanced, quality). "
                         "\"--stream NAME=URL\", \"--record NAME=PATH\" and \"--iso NAME=N\" "
                         "use it; without NAME= they use the default profile (--size, --fps, "
                         "--bitrate). Repeatable."),
                      "NAME=WxH@FPS:KBPS[:PRESET]"});
    parser.addOption({"adaptive",
                      tr("The profile's bitrate steps down while one of its targets is "
                         "congested (to FLOOR percent of its bitrate at least, default 30) and "
                         "back up once they keep up. NAME may be \"default\". Repeatable."),
                      "NAME[:FLOOR]"});
    parser.addOption({"multiview",
                      tr("The profile shows the multiview (preview, program and the four "
                         "channels, labelled) instead of the program. Repeatable."),
                      "NAME"});
    parser.addOption({"iso",
                      tr("Record channel N on its own beside the program recording, as decoded "
                         "and with its own sound, from the same instant (file "
                         "\"<recording>_isoN.<ext>\"). Repeatable."),
                      "[NAME=]N"});
    parser.addOption({"hls-segment",
                      tr("Length of an HLS target's segments in seconds, 1 to 6 (default 2). An "
                         "HLS target is a path to its playlist: --stream live/index.m3u8."),
                      "S"});
    parser.addOption({"hls-window",
                      tr("How many segments an HLS playlist names, 2 to 60 (default 6); older "
                         "ones are deleted."),
                      "N"});
}

bool readProfileOptions(const QCommandLineParser &parser, EncoderSettings &out, QString *error)
{
    for (const QString &value : parser.values("profile")) {
        QString why;
        const std::optional<EncodeProfile> profile = profiles::parse(value, &why);
        if (!profile) {
            *error = QStringLiteral("--profile: ") + why;
            return false;
        }
        if (profileNamed(out, profile->name)) {
            *error = tr("--profile: \"%1\" is defined twice").arg(profile->name);
            return false;
        }
        out.profiles << *profile;
    }
    const auto unknown = [&](const char *option, const QString &name) {
        *error = tr("--%1: there is no profile named \"%2\" (define it with --profile)")
                     .arg(QLatin1String(option), name);
        return false;
    };
    for (const QString &value : parser.values("adaptive")) {
        const QString name = value.section(':', 0, 0).trimmed();
        const QString floorText = value.section(':', 1);
        bool ok = true;
        const int floor = floorText.isEmpty() ? 30 : floorText.toInt(&ok);
        if (!ok || floor < 5 || floor > 100) {
            *error = tr("--adaptive expects NAME[:FLOOR] with FLOOR from 5 to 100, got \"%1\"")
                         .arg(value);
            return false;
        }
        if (profiles::isDefault(name)) {
            out.adaptiveBitrate = true;
            out.adaptiveFloorPercent = floor;
        } else if (EncodeProfile *profile = profileNamed(out, name)) {
            profile->adaptive = true;
            profile->floorPercent = floor;
        } else {
            return unknown("adaptive", name);
        }
    }
    for (const QString &name : parser.values("multiview")) {
        EncodeProfile *profile = profileNamed(out, name.trimmed());
        if (!profile)
            return unknown("multiview", name.trimmed());
        profile->multiview = true;
    }
    // "NAME=" before the recording's path only when NAME is a profile: a file may hold '='.
    if (out.fileEnabled) {
        QString rest;
        const QString name = profiles::splitName(out.filePath, &rest);
        if (!name.isEmpty() && known(out, name)) {
            out.fileProfile = profiles::isDefault(name) ? QString() : name;
            out.filePath = rest;
            out.fileEnabled = !rest.isEmpty();
        }
    }
    for (const StreamTarget &target : out.streamTargets)
        if (!known(out, target.profile))
            return unknown("stream", target.profile);
    for (const QString &value : parser.values("iso")) {
        QString rest;
        const QString name = profiles::splitName(value, &rest);
        bool ok = false;
        const int channel = rest.toInt(&ok);
        if (!ok || channel < 1 || channel > 4) {
            *error = tr("--iso expects a channel from 1 to 4, got \"%1\"").arg(value);
            return false;
        }
        if (!known(out, name))
            return unknown("iso", name);
        if (!out.fileEnabled) {
            *error = tr("--iso records beside the program: it needs --record");
            return false;
        }
        out.isoRecordings << IsoRecording{
            channel - 1, profiles::isDefault(name) ? QString() : name, {}};
    }
    for (const auto &[option, low, high] :
         {std::tuple{"hls-segment", 1, 6}, std::tuple{"hls-window", 2, 60}}) {
        if (!parser.isSet(option))
            continue;
        bool ok = false;
        const int value = parser.value(option).toInt(&ok);
        if (!ok || value < low || value > high) {
            *error = tr("--%1 expects a whole number from %2 to %3, got \"%4\"")
                         .arg(QLatin1String(option))
                         .arg(low)
                         .arg(high)
                         .arg(parser.value(option));
            return false;
        }
        for (StreamTarget &target : out.streamTargets)
            (QLatin1String(option) == QLatin1String("hls-segment") ? target.hlsSegmentSeconds
                                                                   : target.hlsWindow) = value;
    }
    return true;
}

} // namespace selvane
