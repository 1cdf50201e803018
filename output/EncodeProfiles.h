#pragma once

// Encode profiles as the faces write them and as the outputs use them: the text form
// "NAME=WxH@FPS:KBPS[:PRESET]", finding one by name, and the settings one profile's encoder is
// opened with.
// Free functions on plain values, any thread.

#include "output/EncoderSettings.h"

#include <QSize>
#include <QString>
#include <optional>

namespace selvane::profiles {

// The name that stands for the default profile (today's settings) wherever a profile is named.
inline constexpr char kDefaultName[] = "default";

// Letters, digits, '-' and '_', 1 to 32 of them.
bool isValidName(const QString &name);
// True for an empty name or "default": the default profile.
bool isDefault(const QString &name);

// "NAME=WxH@FPS:KBPS[:PRESET]", PRESET one of performance, balanced, quality. Null with
// `error` set when the text does not read.
std::optional<EncodeProfile> parse(const QString &text, QString *error);
// The same form back (for logs and for the settings).
QString toText(const EncodeProfile &profile);

// "NAME=REST" where NAME is a profile's name: splits it off (`rest` gets the remainder); a text
// without such a prefix is returned whole with an empty name. A URL's own '=' (a query) is
// never taken for one, since a name holds no ':' or '/'.
QString splitName(const QString &text, QString *rest);

// The profile of that name (the default profile built from `settings` for an empty name or
// "default"); null when there is none.
std::optional<EncodeProfile> find(const EncoderSettings &settings, const QString &name);
EncodeProfile defaultProfile(const EncoderSettings &settings);

// The settings one profile's encoder opens with: the base's files and rules, the profile's
// picture, bitrate, encoder and preset; no file and no target (the caller adds its own).
EncoderSettings settingsFor(const EncoderSettings &base, const EncodeProfile &profile);
// The profile's picture size at this program size (its own, or the program's).
QSize sizeFor(const EncodeProfile &profile, QSize programSize);

// "take_iso2.mp4" beside "take.mp4" for channel index 1.
QString isoPathBeside(const QString &recordingPath, int channel);

} // namespace selvane::profiles
