#include "app/UpdateNotice.h"

#include <QDir>
#include <QEvent>
#include <QHBoxLayout>
#include <QLabel>
#include <QProcess>
#include <QProgressBar>
#include <QPushButton>

namespace selvane {

UpdateNotice::UpdateNotice(UpdateCheck *check, const QString &folder, QWidget *parent)
    : QWidget(parent), m_check(check), m_folder(folder)
{
    setObjectName("updateNotice");
    m_label = new QLabel(this);
    m_download = new QPushButton(this);
    m_progress = new QProgressBar(this);
    m_progress->setMaximumWidth(140);
    m_progress->hide();
    auto *row = new QHBoxLayout(this);
    row->setContentsMargins(0, 0, 0, 0);
    row->addWidget(m_label);
    row->addWidget(m_progress);
    row->addWidget(m_download);
    hide();
    connect(check, &UpdateCheck::updateAvailable, this, &UpdateNotice::offer);
    connect(check, &UpdateCheck::downloadProgress, this, [this](qint64 received, qint64 total) {
        m_progress->setRange(0, 1000);
        m_progress->setValue(total > 0 ? int(received * 1000 / total) : 0);
    });
    connect(check, &UpdateCheck::downloaded, this, &UpdateNotice::finished);
    connect(check, &UpdateCheck::downloadFailed, this, &UpdateNotice::failed);
    connect(m_download, &QPushButton::clicked, this, &UpdateNotice::startDownload);
    retranslateUi();
}

void UpdateNotice::offer(const UpdateCheck::Offer &offer)
{
    m_offer = offer;
    m_stage = Stage::Offered;
    retranslateUi();
    show();
}

void UpdateNotice::startDownload()
{
    m_stage = Stage::Downloading;
    m_progress->setValue(0);
    retranslateUi();
    m_check->download(m_offer, m_folder);
}

void UpdateNotice::finished(const QString &path)
{
    m_stage = Stage::Done;
    m_detail = QDir::toNativeSeparators(path);
#ifdef _WIN32
    // The installer asks to close the window when it replaces its files.
    if (!QProcess::startDetached(path, {})) {
        m_stage = Stage::Failed;
        m_detail = tr("the installer did not start");
    }
#endif
    retranslateUi();
}

void UpdateNotice::failed(const QString &reason)
{
    m_stage = Stage::Failed;
    m_detail = reason;
    retranslateUi();
}

void UpdateNotice::changeEvent(QEvent *event)
{
    if (event->type() == QEvent::LanguageChange)
        retranslateUi();
    QWidget::changeEvent(event);
}

void UpdateNotice::retranslateUi()
{
    m_download->setText(m_stage == Stage::Failed ? tr("Try Again") : tr("Download"));
    m_download->setAccessibleName(tr("Download the update"));
    m_progress->setAccessibleName(tr("Update download progress"));
    m_download->setVisible(m_stage == Stage::Offered || m_stage == Stage::Failed);
    m_progress->setVisible(m_stage == Stage::Downloading);
    switch (m_stage) {
    case Stage::Offered:
        m_label->setText(tr("Selvane %1 is available.").arg(m_offer.version));
        break;
    case Stage::Downloading:
        m_label->setText(tr("Downloading Selvane %1...").arg(m_offer.version));
        break;
    case Stage::Done:
#ifdef _WIN32
        m_label->setText(tr("The installer of Selvane %1 has started.").arg(m_offer.version));
#else
        m_label->setText(
            tr("The installer of Selvane %1 for Windows is at %2.").arg(m_offer.version, m_detail));
#endif
        break;
    case Stage::Failed:
        m_label->setText(tr("The update was not downloaded: %1").arg(m_detail));
        break;
    }
    m_label->setAccessibleName(m_label->text());
}

} // namespace selvane
