#pragma once

// The "Text Effects" dialog: edits a copy of one text overlay record (words, place, font, colours,
// box, shadow, outline, opacity, scrolling) with a live preview drawn as the program draws it.
// The editor's ranges are those of the widgets. exec() returns Accepted with the edited record in
// data(); on Cancel data() is the record it was given, unchanged. Nothing reaches the engine from
// here: the caller (the text panel, the schedule window) decides what to do with the result.
//
// GUI thread only. Emits nothing beyond QDialog's own signals.

#include "engine/EngineTypes.h"

#include <QDialog>

class QCheckBox;
class QComboBox;
class QDialogButtonBox;
class QFontComboBox;
class QGridLayout;
class QGroupBox;
class QFormLayout;
class QLabel;
class QPlainTextEdit;
class QPushButton;
class QSlider;
class QSpinBox;

namespace selvane {

class TextPreviewWidget;

class TextEffectDialog : public QDialog
{
    Q_OBJECT

public:
    explicit TextEffectDialog(const TextOverlayData &data, QWidget *parent = nullptr);

    TextOverlayData data() const { return m_data; }
    // The program's picture size: the preview scrolls at the pace the program will.
    void setProgramSize(QSize size);
    TextPreviewWidget *preview() const { return m_preview; }
    // Every way of closing without OK (Cancel, Escape, the window's close button) leaves data()
    // as it was given.
    void done(int result) override;

public slots:
    void updatePreview();
    void chooseFontColor();
    void chooseBackgroundColor();
    void chooseShadowColor();
    void chooseOutlineColor();
    void onAccept();
    void onReject();
    // The look of the dialog when it is opened from the schedule window.
    void applyArrangementStyle();

protected:
    void changeEvent(QEvent *event) override;

private:
    void showData();
    void readFields();
    void placeFromPreview(QPoint scene);
    void chooseColor(QColor TextOverlayData::*field, QPushButton *button, const QString &title);
    static void paintSwatch(QPushButton *button, const QColor &color);
    void retranslateUi();

    TextOverlayData m_original;
    TextOverlayData m_data;
    bool m_showing = false; // fields are being filled: no echo into the record

    QPlainTextEdit *m_text = nullptr;
    QLabel *m_limitNote = nullptr; // shown once a paste or typing went past the longest text
    TextPreviewWidget *m_preview = nullptr;
    QLabel *m_xLabel = nullptr;
    QLabel *m_yLabel = nullptr;
    QSpinBox *m_x = nullptr;
    QSpinBox *m_y = nullptr;

    QGroupBox *m_fontGroup = nullptr;
    QFormLayout *m_fontForm = nullptr;
    QFontComboBox *m_font = nullptr;
    QSpinBox *m_size = nullptr;
    QCheckBox *m_bold = nullptr;
    QCheckBox *m_italic = nullptr;
    QCheckBox *m_underline = nullptr;
    QCheckBox *m_strikeOut = nullptr;

    QGroupBox *m_effectsGroup = nullptr;
    QLabel *m_fontColorLabel = nullptr;
    QPushButton *m_fontColor = nullptr;
    QCheckBox *m_background = nullptr;
    QPushButton *m_backgroundColor = nullptr;
    QLabel *m_paddingLabel = nullptr;
    QSpinBox *m_padding = nullptr;
    QCheckBox *m_shadow = nullptr;
    QPushButton *m_shadowColor = nullptr;
    QLabel *m_shadowOffsetLabel = nullptr;
    QSpinBox *m_shadowX = nullptr;
    QSpinBox *m_shadowY = nullptr;
    QCheckBox *m_outline = nullptr;
    QPushButton *m_outlineColor = nullptr;
    QLabel *m_outlineWidthLabel = nullptr;
    QSpinBox *m_outlineWidth = nullptr;
    QLabel *m_opacityLabel = nullptr;
    QSlider *m_opacity = nullptr;
    QLabel *m_opacityValue = nullptr;

    QGroupBox *m_scrollGroup = nullptr;
    QFormLayout *m_scrollForm = nullptr;
    QCheckBox *m_scroll = nullptr;
    QComboBox *m_direction = nullptr;
    QSpinBox *m_passes = nullptr;
    QSpinBox *m_speed = nullptr;

    QDialogButtonBox *m_buttons = nullptr;
    QPushButton *m_ok = nullptr;
    QPushButton *m_cancel = nullptr;
};

} // namespace selvane
