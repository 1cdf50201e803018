// libFuzzer target: any bytes given to the arrangement reader either yield an arrangement or an
// error, never a crash, a hang or undefined behaviour; what is read writes back and reads again
// to the same records.

#include "schedule/ProgramArrangement.h"

#include <QByteArray>
#include <QString>

#include <cstdint>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    const QByteArray bytes(reinterpret_cast<const char *>(data), qsizetype(size));
    QString error;
    const ProgramArrangement first = arrangement::fromJson(bytes, &error);
    if (!error.isEmpty())
        return 0;
    (void)arrangement::validate(first);
    QString again;
    const ProgramArrangement second = arrangement::fromJson(arrangement::toJson(first), &again);
    if (!again.isEmpty())
        std::abort();
    // Paths holding '|' cannot survive the round trip; every other field must.
    bool pipes = false;
    for (const SceneClip &clip : first.sceneClips)
        for (const QString &path : clip.paths)
            pipes = pipes || path.contains('|');
    if (!pipes && second.sceneClips.size() != first.sceneClips.size())
        std::abort();
    return 0;
}
