#pragma once

// The Image Playback dock: a slideshow as the program picture. The operator takes the images of
// a folder or chooses files, sets how long each stays and whether the list starts again, and
// starts it; Stop goes back to the channel that was on air before (or black). Taking a channel
// while the slides run ends them as well.
//
// GUI thread only. The engine plays the slides; this panel keeps the list and shows progress.

#include "engine/EngineTypes.h"

#include <QStringList>
#include <QWidget>

class QCheckBox;
class QDoubleSpinBox;
class QLabel;
class QListWidget;
class QPushButton;

namespace selvane {

class Engine;

class ImagePlaybackPanel : public QWidget
{
    Q_OBJECT

public:
    ImagePlaybackPanel(Engine *engine, QWidget *parent = nullptr);

    QStringList paths() const { return m_paths; }
    void setPaths(const QStringList &paths);
    // The images of a folder, by name (the Choose Folder button calls it after its dialog).
    void setFolder(const QString &directory);
    bool isPlaying() const { return m_playing; }
    // Called with the engine's snapshot a few times a second: a cut away ends the slides.
    void showProgram(const ProgramStats &program);

public slots:
    void start();
    void stop();

protected:
    void changeEvent(QEvent *event) override;

private:
    void refreshList();
    void showProgress();
    void retranslateUi();

    Engine *m_engine = nullptr;
    QStringList m_paths;
    bool m_playing = false;
    bool m_slideOnAir = false; // a slide of this start has been put on air
    int m_shown = 0;

    QLabel *m_heading = nullptr;
    QListWidget *m_list = nullptr;
    QPushButton *m_folder = nullptr;
    QPushButton *m_add = nullptr;
    QPushButton *m_remove = nullptr;
    QPushButton *m_clear = nullptr;
    QLabel *m_intervalLabel = nullptr;
    QDoubleSpinBox *m_interval = nullptr;
    QCheckBox *m_loop = nullptr;
    QPushButton *m_start = nullptr;
    QPushButton *m_stop = nullptr;
    QLabel *m_status = nullptr;
};

} // namespace selvane
