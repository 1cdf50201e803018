#pragma once

// The status bar's word about a newer version: hidden until the update check offers one, then
// "Selvane 0.2.0 is available" with a Download button; the download's progress; and at the end,
// on Windows, the installer started, elsewhere where the checked installer was put.
//
// Owns: its labels, button and progress bar; the UpdateCheck is the window's. GUI thread.

#include "app/UpdateCheck.h"

#include <QWidget>

class QLabel;
class QProgressBar;
class QPushButton;

namespace selvane {

class UpdateNotice : public QWidget
{
    Q_OBJECT

public:
    // Installers are downloaded into `folder`.
    UpdateNotice(UpdateCheck *check, const QString &folder, QWidget *parent = nullptr);

protected:
    void changeEvent(QEvent *event) override;

private:
    void offer(const UpdateCheck::Offer &offer);
    void startDownload();
    void finished(const QString &path);
    void failed(const QString &reason);
    void retranslateUi();

    UpdateCheck *m_check = nullptr;
    QString m_folder;
    UpdateCheck::Offer m_offer;
    QLabel *m_label = nullptr;
    QPushButton *m_download = nullptr;
    QProgressBar *m_progress = nullptr;
    enum class Stage
    {
        Offered,
        Downloading,
        Done,
        Failed
    } m_stage = Stage::Offered;
    QString m_detail; // the installer's path, or why the download failed
};

} // namespace selvane
