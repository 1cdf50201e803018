// Decisions the engine makes as pure functions: the words of every problem in both languages,
// and the rates of the stats snapshot.

#include "engine/Problem.h"
#include "engine/StatsSampler.h"

#include <QCoreApplication>
#include <QTranslator>
#include <QtTest>

using namespace selvane;

class TestDecisions : public QObject
{
    Q_OBJECT

private slots:
    void everyProblemHasWordsInBothLanguages()
    {
        QTranslator chinese;
        QVERIFY(chinese.load(":/i18n/selvane_zh_CN.qm"));
        for (int k = int(ProblemKind::None) + 1; k <= int(ProblemKind::NoImages); ++k) {
            const Problem problem(ProblemKind(k), "SUBJECT-7", 42, "DETAIL-9");
            const QString english = problemText(problem, ProblemLanguage::English);
            QVERIFY2(!english.isEmpty(), qPrintable(QString::number(k)));
            // Every placeholder is filled.
            QVERIFY2(!english.contains(QRegularExpression("%\\d")), qPrintable(english));
            QCoreApplication::installTranslator(&chinese);
            const QString operatorWords = problemText(problem);
            QCoreApplication::removeTranslator(&chinese);
            QVERIFY2(operatorWords != english, qPrintable("untranslated: " + english));
            QVERIFY2(!operatorWords.contains(QRegularExpression("%\\d")),
                     qPrintable(operatorWords));
            // What the problem concerns is named in both, where the English names it.
            for (const QString &named : {QStringLiteral("SUBJECT-7"), QStringLiteral("42")})
                if (english.contains(named))
                    QVERIFY2(operatorWords.contains(named), qPrintable(operatorWords));
            // The control API answers in English whatever the window shows.
            QCoreApplication::installTranslator(&chinese);
            QCOMPARE(problemText(problem, ProblemLanguage::English), english);
            QCoreApplication::removeTranslator(&chinese);
        }
        QVERIFY(problemText(Problem()).isEmpty());
    }

    void ratesFollowTheCountersAndNeverGoNegative()
    {
        StatsSampler sampler;
        StatsSampler::Counters counters;
        counters.targetBytes = {0};
        sampler.sample(counters, 1000);
        EngineStats stats;
        stats.output.targets.resize(2);
        sampler.apply(stats);
        QCOMPARE(stats.program.fps, 0.0); // nothing happened in the first second

        counters.channelPictures = {30, 25, 0, 60};
        counters.programFrames = 30;
        counters.bytesEncoded = 250'000;
        counters.targetBytes = {125'000, 500'000}; // a second target came in between
        sampler.sample(counters, 2000);
        sampler.apply(stats);
        QCOMPARE(stats.channels[0].fps, 30.0);
        QCOMPARE(stats.channels[1].fps, 25.0);
        QCOMPARE(stats.channels[3].fps, 60.0);
        QCOMPARE(stats.program.fps, 30.0);
        QCOMPARE(stats.output.kbps, 2000.0);
        QCOMPARE(stats.output.targets[0].kbps, 1000.0);
        QCOMPARE(stats.output.targets[1].kbps, 4000.0);

        // New outputs start their counters from zero: no negative rate, and half a second
        // between samples counts as half a second.
        counters.bytesEncoded = 1000;
        counters.targetBytes = {1000};
        counters.programFrames = 45;
        sampler.sample(counters, 2500);
        stats = {};
        stats.output.targets.resize(1);
        sampler.apply(stats);
        QCOMPARE(stats.output.kbps, 0.0);
        QCOMPARE(stats.output.targets[0].kbps, 0.0);
        QCOMPARE(stats.program.fps, 30.0);
    }
};

QTEST_GUILESS_MAIN(TestDecisions)
#include "test_decisions.moc"
