// libFuzzer target: any list of arguments to the headless face (one per line of the input) is
// read without a crash, a hang or undefined behaviour, and whatever it accepts can be used as it
// stands: an output size that is even and in range, 30 or 60 fps, a bitrate in range, channels
// 1 to 4, a base channel among them, overlays in the scene, a control port from 1 and an address
// to listen on that is one.

#include "cli/CommandLine.h"

#include <QByteArray>
#include <QCommandLineParser>
#include <QHostAddress>
#include <QStringList>
#include <cstdint>
#include <cstdlib>

namespace {
void require(bool condition)
{
    if (!condition)
        std::abort();
}
} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    QStringList arguments{"selvane", "--headless"};
    const QByteArray text(reinterpret_cast<const char *>(data), qsizetype(size));
    for (const QByteArray &line : text.split('\n'))
        arguments << QString::fromUtf8(line);
    QCommandLineParser parser;
    selvane::configureCommandLine(parser);
    if (!parser.parse(arguments))
        return 0;
    selvane::ShowOptions options;
    QString error;
    if (!selvane::readShowOptions(parser, &options, &error)) {
        require(!error.isEmpty());
        return 0;
    }
    if (options.outputSize.isValid()) {
        const QSize s = options.outputSize;
        require(s.width() >= 2 && s.height() >= 2 && s.width() <= 8192 && s.height() <= 8192);
        require(s.width() % 2 == 0 && s.height() % 2 == 0);
    }
    require(options.output.fps == 30 || options.output.fps == 60);
    require(options.output.bitrateKbps == 0 ||
            (options.output.bitrateKbps >= 100 && options.output.bitrateKbps <= 400000));
    for (auto it = options.channels.cbegin(); it != options.channels.cend(); ++it)
        require(it.key() >= 0 && it.key() < 4 && !it.value().isEmpty());
    require(options.baseChannel >= 0 && options.baseChannel < 4);
    for (const auto &media : options.media)
        require(media.rect.width() > 0 && media.rect.height() > 0);
    require(!parser.isSet("control-port") || options.controlPort >= 1);
    require(options.controlBind.isEmpty() || !QHostAddress(options.controlBind).isNull());
    return 0;
}
