#include "input/FfmpegSupport.h"

#include <cmath>

extern "C" {
#include <libavutil/display.h>
#include <libavutil/error.h>
}

namespace ffsupport {

QString Dictionary::value(const char *key) const
{
    const AVDictionaryEntry *entry = av_dict_get(m_dict, key, nullptr, 0);
    return entry ? QString::fromUtf8(entry->value) : QString();
}

QString errorText(const char *call, int err)
{
    char text[AV_ERROR_MAX_STRING_SIZE] = {};
    av_strerror(err, text, sizeof text);
    return QStringLiteral("%1: %2").arg(QLatin1String(call), QString::fromUtf8(text));
}

namespace {

const int32_t *displayMatrix(const AVStream *stream)
{
#if LIBAVFORMAT_VERSION_INT >= AV_VERSION_INT(60, 15, 100)
    const AVPacketSideData *side =
        av_packet_side_data_get(stream->codecpar->coded_side_data,
                                stream->codecpar->nb_coded_side_data, AV_PKT_DATA_DISPLAYMATRIX);
    if (side && side->size >= 9 * sizeof(int32_t))
        return reinterpret_cast<const int32_t *>(side->data);
    return nullptr;
#else
    size_t size = 0;
    const uint8_t *data = av_stream_get_side_data(stream, AV_PKT_DATA_DISPLAYMATRIX, &size);
    if (data && size >= 9 * sizeof(int32_t))
        return reinterpret_cast<const int32_t *>(data);
    return nullptr;
#endif
}

int normaliseQuarterTurns(double clockwiseDegrees)
{
    if (!std::isfinite(clockwiseDegrees))
        return 0;
    long turns = std::lround(clockwiseDegrees / 90.0) % 4;
    if (turns < 0)
        turns += 4;
    return static_cast<int>(turns) * 90;
}

} // namespace

int uprightRotationDegrees(const AVStream *stream)
{
    if (!stream)
        return 0;
    if (const AVDictionaryEntry *rotate = av_dict_get(stream->metadata, "rotate", nullptr, 0)) {
        char *end = nullptr;
        const double degrees = std::strtod(rotate->value, &end);
        if (end != rotate->value)
            return normaliseQuarterTurns(degrees);
    }
    if (const int32_t *matrix = displayMatrix(stream)) {
        // The matrix rotates counter-clockwise by this angle; undo it.
        return normaliseQuarterTurns(-av_display_rotation_get(matrix));
    }
    return 0;
}

} // namespace ffsupport
