#include "app/FailoverDesk.h"

#include "engine/Engine.h"
#include "media/StoredSettings.h"
#include "panels/ChannelPanel.h"
#include "panels/FailoverBox.h"
#include "panels/ProductionPanel.h"

#include <QDebug>
#include <QFileDialog>
#include <QFileInfo>
#include <QInputDialog>
#include <QMainWindow>
#include <QMessageBox>
#include <QStatusBar>

namespace selvane {

FailoverDesk::FailoverDesk(Engine &engine,
                           const std::array<ChannelPanel *, kChannelCount> &channels,
                           FailoverBox *box, ProductionPanel *production, QMainWindow *window)
    : QObject(window), m_engine(engine), m_channels(channels), m_box(box), m_production(production),
      m_window(window)
{
    // What was kept; a backup file gone since is dropped rather than the whole setting.
    FailoverSettings settings = stored();
    if (const Problem problem = engine.setFailover(settings)) {
        qWarning().noquote() << "Failover settings not used:"
                             << problemText(problem, ProblemLanguage::English);
        for (QString &backup : settings.backups)
            if (!backup.startsWith(QLatin1String("channel:")) && !backup.contains("://") &&
                !QFileInfo(backup).isFile())
                backup.clear();
        engine.setFailover(settings);
    }
    m_box->show(engine.failover());
    for (int c = 0; c < kChannelCount; ++c) {
        ChannelPanel *panel = m_channels[std::size_t(c)];
        panel->setBackup(engine.failover().backups[std::size_t(c)]);
        connect(panel, &ChannelPanel::backupChosen, this, [this, c](const QString &backup) {
            FailoverSettings next = m_engine.failover();
            next.backups[std::size_t(c)] = backup;
            apply(next);
        });
        connect(panel, &ChannelPanel::chooseBackupRequested, this,
                [this, c](bool file) { chooseBackup(c, file); });
    }
    connect(m_box, &FailoverBox::changed, this,
            [this] { apply(m_box->settings(m_engine.failover())); });
    connect(m_production, &ProductionPanel::slateRequested, &engine, &Engine::showSlate);
    connect(&engine, &Engine::slateChanged, m_production, &ProductionPanel::setSlateOnAir);
    connect(&engine, &Engine::failedOver, this, [this](int channel, const QString &standIn) {
        showStandIns();
        m_window->statusBar()->showMessage(tr("Channel %1 failed on air; %2 stands in")
                                               .arg(channel + 1)
                                               .arg(ChannelPanel::standInText(standIn)),
                                           15000);
    });
    connect(&engine, &Engine::returnedToAir, this, [this](int channel) {
        showStandIns();
        m_window->statusBar()->showMessage(tr("Channel %1 is back on air").arg(channel + 1), 15000);
    });
    // An operator's cut ends a failover without a return.
    connect(&engine, &Engine::programChannelChanged, this, &FailoverDesk::showStandIns);
}

void FailoverDesk::apply(const FailoverSettings &settings)
{
    if (const Problem problem = m_engine.setFailover(settings)) {
        QMessageBox::warning(m_window, tr("Failover"), problemText(problem));
    } else {
        store(settings);
    }
    // The panels show what the engine uses.
    const FailoverSettings used = m_engine.failover();
    m_box->show(used);
    for (int c = 0; c < kChannelCount; ++c)
        m_channels[std::size_t(c)]->setBackup(used.backups[std::size_t(c)]);
}

void FailoverDesk::chooseBackup(int channel, bool file)
{
    const QString current = m_engine.failover().backups[std::size_t(channel)];
    QString backup;
    if (file) {
        backup = QFileDialog::getOpenFileName(
            m_window, tr("Backup of Channel %1").arg(channel + 1),
            QFileInfo(current).absolutePath(),
            tr("Clips and pictures (*.mp4 *.mov *.mkv *.webm *.ts *.png *.jpg *.jpeg);;"
               "All files (*)"));
    } else {
        bool ok = false;
        backup = QInputDialog::getText(m_window, tr("Backup of Channel %1").arg(channel + 1),
                                       tr("A stream address (rtmp://, srt://, https:// …)"),
                                       QLineEdit::Normal,
                                       current.contains("://") ? current : QString(), &ok);
        if (!ok)
            return;
    }
    if (backup.trimmed().isEmpty())
        return;
    FailoverSettings next = m_engine.failover();
    next.backups[std::size_t(channel)] = backup.trimmed();
    apply(next);
}

void FailoverDesk::showStandIns()
{
    const ProgramStats program = m_engine.stats().program;
    for (int c = 0; c < kChannelCount; ++c)
        m_channels[std::size_t(c)]->setStandIn(c == program.failedChannel ? program.standIn
                                                                          : QString());
}

FailoverSettings FailoverDesk::stored()
{
    StoredSettings s;
    s.beginGroup("failover");
    FailoverSettings settings;
    settings.enabled = s.value("enabled", false).toBool();
    settings.failoverMs = s.value("failoverMs", settings.failoverMs).toInt();
    settings.returnMs = s.value("returnMs", settings.returnMs).toInt();
    for (int c = 0; c < kChannelCount; ++c)
        settings.backups[std::size_t(c)] =
            s.value(QStringLiteral("backup%1").arg(c + 1)).toString();
    settings.slatePath = s.value("slate").toString();
    settings.slateText = s.value("slateText").toString();
    return settings;
}

void FailoverDesk::store(const FailoverSettings &settings)
{
    StoredSettings s;
    s.beginGroup("failover");
    s.setValue("enabled", settings.enabled);
    s.setValue("failoverMs", settings.failoverMs);
    s.setValue("returnMs", settings.returnMs);
    for (int c = 0; c < kChannelCount; ++c)
        s.setValue(QStringLiteral("backup%1").arg(c + 1), settings.backups[std::size_t(c)]);
    s.setValue("slate", settings.slatePath);
    s.setValue("slateText", settings.slateText);
}

} // namespace selvane
