#pragma once

// Adds or edits one stream target: its kind, the server URL, the stream key (hidden until the
// operator reveals it), the encode profile it takes and whether it is used; for an HLS folder
// the playlist's path, the length of a segment and how many the playlist names. It owns its
// controls; OK runs the engine's target checks and shows what is wrong instead of closing.
// GUI thread only; modal. Emits nothing beyond QDialog's accepted/rejected.

#include "output/EncoderSettings.h"

#include <QDialog>
#include <QString>
#include <QStringList>

class QCheckBox;
class QComboBox;
class QFormLayout;
class QLabel;
class QLineEdit;
class QPushButton;
class QSpinBox;

namespace selvane {

// One stream target as the operator set it.
struct StreamTargetEntry
{
    StreamTargetEntry(QString kind_ = {}, bool enabled_ = true, QString server_ = {},
                      QString key_ = {})
        : kind(std::move(kind_)), enabled(enabled_), server(std::move(server_)),
          key(std::move(key_))
    {
    }
    QString kind; // "RTMP", "RTMPS", "SRT", "HLS/HTTP", "HLS folder", "Custom"
    bool enabled = true;
    QString server; // an HLS folder: the path of its playlist
    QString key;
    QString profile; // the encode profile it takes; empty: the default one
    qint32 hlsSegmentSeconds = 2;
    qint32 hlsWindow = 6;
    // The server with the key as the last path element (when there is a key).
    QString url() const;
    bool isHlsFolder() const { return kind == QLatin1String("HLS folder"); }
    // The target the outputs are started with.
    StreamTarget target() const;
};

class StreamTargetDialog : public QDialog
{
    Q_OBJECT

public:
    // `profiles`: the named encode profiles to choose from besides the default one.
    StreamTargetDialog(QWidget *parent, const StreamTargetEntry &entry,
                       const QStringList &profiles = {});
    StreamTargetEntry entry() const;

    static QStringList kinds()
    {
        return {"RTMP", "RTMPS", "SRT", "HLS/HTTP", "HLS folder", "Custom"};
    }
    // The operator's word for a kind.
    static QString kindText(const QString &kind);

public slots:
    void accept() override;

private:
    void showKind();
    void browsePlaylist();

    QFormLayout *m_form = nullptr;
    QComboBox *m_kind = nullptr;
    QLabel *m_serverLabel = nullptr;
    QPushButton *m_browse = nullptr;
    QComboBox *m_profile = nullptr;
    QSpinBox *m_segment = nullptr;
    QSpinBox *m_window = nullptr;
    QLineEdit *m_server = nullptr;
    QLineEdit *m_key = nullptr;
    QPushButton *m_reveal = nullptr;
    QCheckBox *m_enabled = nullptr;
    QLabel *m_error = nullptr;
};

} // namespace selvane
