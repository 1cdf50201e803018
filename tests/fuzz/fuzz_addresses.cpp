// libFuzzer target: any text given as a source address or a stream target is classified,
// turned into input options and masked for the log without a crash, a hang or undefined
// behaviour; and a secret in any of the places secrets go never survives the masking, whatever
// text surrounds it.

#include "input/SourceAddress.h"
#include "net/SecretMask.h"
#include "output/EncoderSettings.h"
#include "output/StreamUrl.h"

#include <QByteArray>
#include <QString>

extern "C" {
#include <libavutil/dict.h>
}

#include <cstdint>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    const QString address =
        QString::fromUtf8(reinterpret_cast<const char *>(data), qsizetype(size));
    const selvane::SourceAddress source(address);
    (void)source.isLive(nullptr);
    (void)source.localPath();
    (void)selvane::buildDshowDeviceSpec(source.camera(), source.microphone());
    AVDictionary *options = nullptr;
    selvane::buildInputOptions(source, &options, true);
    av_dict_free(&options);

    const StreamTarget target = selvane::parseStreamTarget(address);
    (void)selvane::streamTargetProblem(target);
    (void)selvane::maskSecrets(address);

    // The letters and digits of the input as a secret, placed where secrets go.
    QString secret;
    for (const QChar c : address)
        if (c.isLetterOrNumber() && c.unicode() < 128)
            secret += c;
    if (secret.size() < 8)
        return 0;
    const QString place = address.left(16).simplified().remove(' ');
    for (const QString &url :
         {"rtmp://h:1935/live/" + secret, "srt://h:9000?mode=caller&passphrase=" + secret,
          "srt://h:9000?streamid=#!::r=live/" + secret + ",m=publish",
          "https://user:" + secret + "@h/x", "http://h/hls/" + secret + "/i.m3u8",
          "https://h/i?token=" + secret}) {
        const QString line = "opening " + url + " after " + place;
        if (selvane::maskSecrets(line).contains(secret) && !place.contains(secret))
            std::abort();
    }
    return 0;
}
