#pragma once

// The encode profiles beside the Encoding settings: whether the default profile's bitrate
// adapts (and its floor), and the named profiles as a table (name, size, frame rate, bitrate,
// preset, adaptive bitrate with its floor, whether it shows the multiview) with Add, Edit and
// Remove through EncodeProfileDialog. It owns the list and keeps it in the settings:
// "output/adaptiveBitrate", "output/adaptiveFloorPercent" and "output/profiles/N/" with name,
// width, height (0: the program's), fps (0: the program's), bitrateKbps (0: automatic), preset,
// adaptive, floorPercent, multiview. It decides nothing about what runs: the Output Settings
// panel puts the list into the settings record, and the engine checks it.
//
// GUI thread only. Emits changed() when the operator changed the list or the default profile's
// adaptive bitrate (after it is stored), and before it renamed(from, to) when a profile's name
// was edited, so that what names it can follow.

#include "output/EncoderSettings.h"

#include <QGroupBox>
#include <QList>
#include <QStringList>

class QCheckBox;
class QComboBox;
class QLabel;
class QPushButton;
class QSpinBox;
class QTableWidget;

namespace selvane {

class EncodeProfilesBox : public QGroupBox
{
    Q_OBJECT

public:
    explicit EncodeProfilesBox(QWidget *parent = nullptr);

    const QList<EncodeProfile> &profiles() const { return m_profiles; }
    QStringList names() const;
    // A list from elsewhere (a show loaded with profiles of its own); stored, no changed().
    void setProfiles(const QList<EncodeProfile> &profiles);
    bool adaptiveBitrate() const;
    int adaptiveFloorPercent() const;
    // The program's frame rate, which the dialog lets no profile exceed.
    void setProgramFps(double fps) { m_programFps = fps; }
    // Nothing changes under running encoders.
    void setRunning(bool running);

    // Fills a choice of profile: "default" first, then `names`; a `current` name that is not
    // among them stays on the list, marked missing, so that what was chosen is what the engine
    // is asked for (and refuses). Item data: the name ("default" for the default profile).
    static void fillChoice(QComboBox *combo, const QStringList &names, const QString &current);

signals:
    void changed();
    void renamed(const QString &from, const QString &to);

protected:
    void changeEvent(QEvent *event) override;

private:
    void load();
    void save();
    void showProfiles();
    void edit(int row);
    void retranslateUi();

    QList<EncodeProfile> m_profiles;
    double m_programFps = 30;
    bool m_loading = false;

    QCheckBox *m_adaptive = nullptr;
    QSpinBox *m_floor = nullptr;
    QLabel *m_hint = nullptr;
    QTableWidget *m_table = nullptr;
    QPushButton *m_add = nullptr;
    QPushButton *m_edit = nullptr;
    QPushButton *m_remove = nullptr;
};

} // namespace selvane
