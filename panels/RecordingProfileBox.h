#pragma once

// The recording's encodes, in the Recording part of the output settings: the profile the
// program recording takes, and the channels (1-4) recorded on their own beside it, with the one
// profile they take. It owns those choices and keeps them in the settings: "output/fileProfile"
// (a profile's name, "default" for the Encoding settings), "output/iso/N" for channel N (on or
// off) and "output/isoProfile". It decides nothing: the Output Settings panel puts the choices
// into the settings record, and the engine checks them (a profile that no longer exists is
// refused when the outputs start).
//
// GUI thread only. Emits changed() when the operator changed a choice (after it is stored).

#include "output/EncoderSettings.h"

#include <QList>
#include <QStringList>
#include <QWidget>
#include <array>

class QCheckBox;
class QComboBox;
class QLabel;

namespace selvane {

class RecordingProfileBox : public QWidget
{
    Q_OBJECT

public:
    explicit RecordingProfileBox(QWidget *parent = nullptr);

    // The profiles to choose from besides "default"; the choices made stay.
    void setProfileNames(const QStringList &names);
    // A profile's new name: a choice of the old one becomes the new one (stored).
    void renameProfile(const QString &from, const QString &to);
    // The recording's profile ("default" or a name).
    QString fileProfile() const;
    // The channels ticked, each with the channels' profile, written beside the recording.
    QList<IsoRecording> isoRecordings() const;
    void setRunning(bool running);

signals:
    void changed();

protected:
    void changeEvent(QEvent *event) override;

private:
    void save();
    void retranslateUi();

    QStringList m_names;
    QLabel *m_fileLabel = nullptr;
    QComboBox *m_fileProfile = nullptr;
    QLabel *m_isoLabel = nullptr;
    std::array<QCheckBox *, 4> m_iso{};
    QLabel *m_isoProfileLabel = nullptr;
    QComboBox *m_isoProfile = nullptr;
    QLabel *m_hint = nullptr;
};

} // namespace selvane
