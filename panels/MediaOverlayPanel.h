#pragma once

// The Video Overlay dock: the image and video overlays over the program (at most four, images
// and videos together). The operator adds one from a file, picks it in the list, and places it
// by numbers in the 640 x 360 scene or by dragging its frame on the program preview; opacity,
// shown or hidden, loop for videos. Their sound is set on their strips in the audio mixer.
// Every change goes to the engine at once; the list follows the engine, so overlays a schedule
// shows appear here too (they belong to the schedule and are not edited here).
//
// GUI thread only. Emits framesChanged when the overlays' places or the choice change (the
// preview's frames follow), and selectedChanged.

#include "engine/EngineTypes.h"

#include <QElapsedTimer>
#include <QWidget>

class QCheckBox;
class QDoubleSpinBox;
class QFormLayout;
class QLabel;
class QListView;
class QPushButton;
class QSlider;

namespace selvane {

class Engine;
class OverlayListModel;

class MediaOverlayPanel : public QWidget
{
    Q_OBJECT

public:
    MediaOverlayPanel(Engine *engine, QWidget *parent = nullptr);

    // Adds an overlay of this file (the Add buttons call it after their file dialog). Returns
    // its id, or -1 when refused (a box says why).
    int addOverlay(MediaOverlayRecord::Kind kind, const QString &path);
    int selectedId() const { return m_selected; }
    void select(int id);
    // The overlays the operator may move, for the preview's frames.
    QList<MediaOverlayRecord> editableOverlays() const;

public slots:
    // A new place for an overlay, from the preview; `finished` when the drag ends.
    void moveOverlay(int id, QRectF rect, bool finished);

signals:
    void framesChanged();
    void selectedChanged(int id);

protected:
    void changeEvent(QEvent *event) override;

private:
    void refresh();
    void showSelected();
    void applyFields();
    void browseAndAdd(MediaOverlayRecord::Kind kind);
    void changeFile();
    void removeSelected();
    void refuse(const QString &text);
    void retranslateUi();
    bool editable(const MediaOverlayRecord &record) const;
    const MediaOverlayRecord *find(int id) const;

    Engine *m_engine = nullptr;
    OverlayListModel *m_model = nullptr; // the engine's images and videos, in its order
    int m_selected = -1;
    bool m_showing = false; // fields are being filled from a record: no echo to the engine
    QElapsedTimer m_lastLiveMove;

    QLabel *m_heading = nullptr;
    QListView *m_list = nullptr;
    QPushButton *m_addImage = nullptr;
    QPushButton *m_addVideo = nullptr;
    QPushButton *m_remove = nullptr;
    QWidget *m_editor = nullptr;
    QFormLayout *m_form = nullptr;
    QLabel *m_file = nullptr;
    QPushButton *m_changeFile = nullptr;
    QDoubleSpinBox *m_x = nullptr;
    QDoubleSpinBox *m_y = nullptr;
    QDoubleSpinBox *m_w = nullptr;
    QDoubleSpinBox *m_h = nullptr;
    QSlider *m_opacity = nullptr;
    QLabel *m_opacityValue = nullptr;
    QCheckBox *m_visible = nullptr;
    QCheckBox *m_loop = nullptr;
    QLabel *m_hint = nullptr;
};

} // namespace selvane
