#include "output/EncodeProfiles.h"

#include <QDir>
#include <QFileInfo>
#include <QRegularExpression>
#include <QStringList>

namespace selvane::profiles {

bool isValidName(const QString &name)
{
    static const QRegularExpression pattern(QStringLiteral("^[A-Za-z0-9_-]{1,32}$"));
    return pattern.match(name).hasMatch();
}

bool isDefault(const QString &name)
{
    return name.isEmpty() || name == QLatin1String(kDefaultName);
}

namespace {

const char *presetWord(qint32 preset)
{
    switch (preset) {
    case EncoderSettings::Performance:
        return "performance";
    case EncoderSettings::Quality:
        return "quality";
    default:
        return "balanced";
    }
}

} // namespace

std::optional<EncodeProfile> parse(const QString &text, QString *error)
{
    static const QRegularExpression form(
        QStringLiteral(R"(^([^=]+)=(\d+)x(\d+)@(\d+(?:\.\d+)?):(\d+)(?::([a-z]+))?$)"),
        QRegularExpression::CaseInsensitiveOption);
    const QRegularExpressionMatch m = form.match(text.trimmed());
    const auto fail = [&](const QString &why) {
        if (error)
            *error = why;
        return std::nullopt;
    };
    if (!m.hasMatch())
        return fail(QStringLiteral("expected NAME=WxH@FPS:KBPS[:PRESET], got \"%1\"").arg(text));
    EncodeProfile profile;
    profile.name = m.captured(1).trimmed();
    if (!isValidName(profile.name))
        return fail(QStringLiteral("a profile's name holds letters, digits, '-' and '_' only, "
                                   "got \"%1\"")
                        .arg(profile.name));
    if (isDefault(profile.name))
        return fail(QStringLiteral("\"default\" is the default profile: set it with --size, "
                                   "--fps and --bitrate"));
    const int w = m.captured(2).toInt();
    const int h = m.captured(3).toInt();
    if (w < 16 || h < 16 || w > 8192 || h > 8192 || w % 2 || h % 2)
        return fail(QStringLiteral("a profile's size is an even width and height from 16 to "
                                   "8192, got %1x%2")
                        .arg(w)
                        .arg(h));
    profile.size = QSize(w, h);
    profile.fps = m.captured(4).toDouble();
    if (profile.fps < 1 || profile.fps > 120)
        return fail(QStringLiteral("a profile's frame rate is 1 to 120, got %1").arg(profile.fps));
    profile.bitrateKbps = m.captured(5).toInt();
    if (profile.bitrateKbps < 100 || profile.bitrateKbps > 400000)
        return fail(QStringLiteral("a profile's bitrate is 100 to 400000 kbit/s, got %1")
                        .arg(m.captured(5)));
    const QString preset = m.captured(6).toLower();
    if (preset.isEmpty() || preset == "balanced")
        profile.qualityPreset = EncoderSettings::Balanced;
    else if (preset == "performance")
        profile.qualityPreset = EncoderSettings::Performance;
    else if (preset == "quality")
        profile.qualityPreset = EncoderSettings::Quality;
    else
        return fail(QStringLiteral("a profile's preset is performance, balanced or quality, got "
                                   "\"%1\"")
                        .arg(preset));
    return profile;
}

QString toText(const EncodeProfile &profile)
{
    return QStringLiteral("%1=%2x%3@%4:%5:%6")
        .arg(profile.name)
        .arg(profile.size.width())
        .arg(profile.size.height())
        .arg(profile.fps)
        .arg(profile.bitrateKbps)
        .arg(QLatin1String(presetWord(profile.qualityPreset)));
}

QString splitName(const QString &text, QString *rest)
{
    const qsizetype equals = text.indexOf('=');
    if (equals > 0 && isValidName(text.left(equals).trimmed())) {
        *rest = text.mid(equals + 1).trimmed();
        return text.left(equals).trimmed();
    }
    *rest = text.trimmed();
    return {};
}

EncodeProfile defaultProfile(const EncoderSettings &settings)
{
    EncodeProfile profile;
    profile.name = QLatin1String(kDefaultName);
    profile.fps = settings.fps;
    profile.bitrateKbps = settings.bitrateKbps;
    profile.keyframeSeconds = settings.keyframeSeconds;
    profile.encoderMode = settings.encoderMode;
    profile.qualityPreset = settings.qualityPreset;
    profile.adaptive = settings.adaptiveBitrate;
    profile.floorPercent = settings.adaptiveFloorPercent;
    return profile;
}

std::optional<EncodeProfile> find(const EncoderSettings &settings, const QString &name)
{
    if (isDefault(name))
        return defaultProfile(settings);
    for (const EncodeProfile &profile : settings.profiles)
        if (profile.name == name)
            return profile;
    return std::nullopt;
}

EncoderSettings settingsFor(const EncoderSettings &base, const EncodeProfile &profile)
{
    EncoderSettings s = base;
    s.fileEnabled = false;
    s.filePath.clear();
    s.twinFilePath.clear();
    s.streamTargets.clear();
    s.profiles.clear();
    s.isoRecordings.clear();
    s.fileProfile.clear();
    if (profile.fps > 0)
        s.fps = std::min(profile.fps, base.fps);
    s.bitrateKbps = profile.bitrateKbps;
    s.keyframeSeconds = std::max(1, profile.keyframeSeconds);
    s.encoderMode = profile.encoderMode;
    s.qualityPreset = profile.qualityPreset;
    s.adaptiveBitrate = profile.adaptive;
    s.encodeName = profile.name;
    s.adaptiveFloorPercent = std::clamp(profile.floorPercent, 5, 100);
    return s;
}

QSize sizeFor(const EncodeProfile &profile, QSize programSize)
{
    return profile.size.isValid() && !profile.size.isEmpty() ? profile.size : programSize;
}

QString isoPathBeside(const QString &recordingPath, int channel)
{
    const QFileInfo info(recordingPath);
    const QString suffix = info.suffix().isEmpty() ? QStringLiteral("mp4") : info.suffix();
    return info.dir().filePath(
        QStringLiteral("%1_iso%2.%3").arg(info.completeBaseName()).arg(channel + 1).arg(suffix));
}

} // namespace selvane::profiles
