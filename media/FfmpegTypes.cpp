#include "media/FfmpegTypes.h"

#include <mutex>

extern "C" {
#include <libavdevice/avdevice.h>
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

void ensureMediaLibrariesReady()
{
    static std::once_flag once;
    std::call_once(once, [] {
        avformat_network_init();
        avdevice_register_all();
    });
}

} // namespace ffsupport
