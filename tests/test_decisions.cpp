// Decisions the engine makes as pure functions: the words of every problem in both languages,
// the rates of the stats snapshot, and when a failover stands in for a channel.

#include "engine/FailoverRule.h"
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
        for (int k = int(ProblemKind::None) + 1; k <= int(ProblemKind::SlateUnreadable); ++k) {
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

    void failoverStandsInOnlyForAChannelThatFailed()
    {
        constexpr int kStandby = 4;
        FailoverRule rule(kStandby);
        FailoverConfig config;
        config.enabled = true;
        config.backupChannel[0] = 1;
        rule.setConfig(config);
        using R = FailoverRule::Reading;
        std::array<R, kChannelCount> in{};
        in[0] = {ChannelState::Playing, 0, 1};
        in[1] = {ChannelState::Playing, 0, 1};
        qint64 now = 0;
        // Every tick of 33 ms; channel 1 (the backup) always delivers, channel 0 as `delivers`.
        const auto run = [&](int ticks, bool delivers, int bus = 0) {
            FailoverRule::Step last;
            for (int i = 0; i < ticks; ++i) {
                now += 33'000;
                in[1].pictures++;
                if (delivers)
                    in[0].pictures++;
                const FailoverRule::Step step = rule.step(now, in, bus, false);
                if (step.kind != FailoverRule::Step::Stay)
                    return step;
                last = step;
            }
            return last;
        };
        QCOMPARE(run(100, true).kind, FailoverRule::Step::Stay);
        // Paused by the operator: no picture for long, and no failover.
        in[0].state = ChannelState::Paused;
        QCOMPARE(run(120, false).kind, FailoverRule::Step::Stay);
        in[0].state = ChannelState::Playing;
        // Silent for 2 s while playing: channel 2 stands in, after 60 ticks and not before.
        const qint64 silentFrom = now;
        FailoverRule::Step step = run(120, false);
        QCOMPARE(step.kind, FailoverRule::Step::Fail);
        QCOMPARE(step.backup, 1);
        QVERIFY(now - silentFrom >= 2'000'000 && now - silentFrom <= 2'033'000);
        // Pictures with gaps of a second are not steady: no return.
        for (int i = 0; i < 10; ++i) {
            QCOMPARE(run(30, false, 1).kind, FailoverRule::Step::Stay);
            in[0].pictures++;
        }
        // Its backup fails in turn: the standby takes over.
        in[1].state = ChannelState::Reconnecting;
        step = run(1, false, 1);
        QCOMPARE(step.kind, FailoverRule::Step::Fail);
        QCOMPARE(step.backup, kStandby);
        // Steady again for 3 s: back on air, not before.
        const qint64 steadyFrom = now;
        step = run(200, true, kStandby);
        QCOMPARE(step.kind, FailoverRule::Step::Return);
        QVERIFY(now - steadyFrom >= 3'000'000 && now - steadyFrom <= 3'100'000);
        // A reconnecting channel fails at once, and a new source gets its full time.
        in[0].state = ChannelState::Reconnecting;
        QCOMPARE(run(1, false).kind, FailoverRule::Step::Fail);
        rule.forget();
        in[0] = {ChannelState::Opening, in[0].pictures, 2};
        QCOMPARE(run(50, false).kind, FailoverRule::Step::Stay);
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
