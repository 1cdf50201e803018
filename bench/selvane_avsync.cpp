// Sound-with-picture offsets of recordings made from the coded flash-and-beep pattern (second n
// flashes at grey 40 + 24 (n mod 8) and beeps at 500 + 250 (n mod 8) Hz).
//   selvane_avsync measure FILE...      median, spread, first and last offset of each file
// Never a test: scripts/avsync.sh runs the sources through Selvane and the ffmpeg CLI.

#include "../tests/TestSupport.h"

#include <QCoreApplication>
#include <cstdio>

int main(int argc, char *argv[])
{
    QCoreApplication app(argc, argv);
    const QStringList args = QCoreApplication::arguments();
    if (args.size() < 3 || args[1] != "measure") {
        std::fprintf(stderr, "usage: selvane_avsync measure FILE...\n");
        return 1;
    }
    for (int i = 2; i < args.size(); ++i) {
        const testsupport::SyncMeasure m = testsupport::measureCodedSync(args[i]);
        std::printf("%s: %lld flashes paired, median %+.0f ms, spread %.0f ms, first %+.0f ms, "
                    "last %+.0f ms\n",
                    qPrintable(args[i]), qint64(m.offsets.size()), m.median * 1000, m.spread * 1000,
                    m.first * 1000, m.last * 1000);
        if (qEnvironmentVariableIsSet("SELVANE_AVSYNC_ALL")) {
            QStringList all;
            for (double o : m.offsets)
                all << QString::number(std::lround(o * 1000));
            std::printf("  %s\n", qPrintable(all.join(' ')));
        }
    }
    return 0;
}
