#include "panels/TextEffectDialog.h"

#include "engine/Engine.h"
#include "engine/OverlayDrawing.h"
#include "panels/BoundedTextEdit.h"
#include "panels/TextPreviewWidget.h"

#include <QCheckBox>
#include <QColorDialog>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QEvent>
#include <QFontComboBox>
#include <QFormLayout>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QSlider>
#include <QSpinBox>
#include <QVBoxLayout>
#include <cmath>

namespace selvane {

namespace {

// Box margin and shadow offsets, in scene units.
constexpr int kMaxPadding = 50;
constexpr int kMaxShadowOffset = 30;
constexpr int kSwatchSide = 34;

QSpinBox *spinBox(QWidget *parent, int minimum, int maximum)
{
    auto *box = new QSpinBox(parent);
    box->setRange(minimum, maximum);
    return box;
}

} // namespace

TextEffectDialog::TextEffectDialog(const TextOverlayData &data, QWidget *parent)
    : QDialog(parent), m_original(data), m_data(data)
{
    setObjectName("textEffectDialog");
    setMinimumSize(620, 540);
    resize(700, 600);
    m_showing = true; // until every field exists and shows the record

    auto *text = new BoundedTextEdit(TextOverlayData::kMaxTextLength, this);
    m_text = text;
    m_text->setTabChangesFocus(true);
    m_limitNote = new QLabel(this);
    m_limitNote->setWordWrap(true);
    m_limitNote->hide();
    text->whenCut = [this](qsizetype leftOut) {
        m_limitNote->setText(tr("A text holds at most %1 characters: %2 characters were left out.")
                                 .arg(TextOverlayData::kMaxTextLength)
                                 .arg(leftOut));
        m_limitNote->show();
    };
    m_text->setFixedHeight(m_text->fontMetrics().lineSpacing() * 3 + 14);

    m_preview = new TextPreviewWidget(this);
    const QSizeF scene = OverlayDrawing::sceneSize();
    m_xLabel = new QLabel(this);
    m_yLabel = new QLabel(this);
    m_x = spinBox(this, 0, int(scene.width()));
    m_y = spinBox(this, 0, int(scene.height()));
    m_xLabel->setBuddy(m_x);
    m_yLabel->setBuddy(m_y);
    auto *place = new QHBoxLayout;
    place->addWidget(m_xLabel);
    place->addWidget(m_x);
    place->addSpacing(8);
    place->addWidget(m_yLabel);
    place->addWidget(m_y);
    place->addStretch(1);
    auto *left = new QVBoxLayout;
    left->addWidget(m_preview, 1);
    left->addLayout(place);

    m_fontGroup = new QGroupBox(this);
    m_fontForm = new QFormLayout(m_fontGroup);
    m_font = new QFontComboBox(m_fontGroup);
    m_font->setMaximumWidth(200);
    m_size = spinBox(m_fontGroup, TextOverlayData::kMinPointSize, TextOverlayData::kMaxPointSize);
    m_bold = new QCheckBox(m_fontGroup);
    m_italic = new QCheckBox(m_fontGroup);
    m_underline = new QCheckBox(m_fontGroup);
    m_strikeOut = new QCheckBox(m_fontGroup);
    auto *styles = new QGridLayout;
    styles->addWidget(m_bold, 0, 0);
    styles->addWidget(m_italic, 0, 1);
    styles->addWidget(m_underline, 1, 0);
    styles->addWidget(m_strikeOut, 1, 1);
    m_fontForm->addRow(new QLabel(m_fontGroup), m_font);
    m_fontForm->addRow(new QLabel(m_fontGroup), m_size);
    m_fontForm->addRow(styles);
    auto *top = new QHBoxLayout;
    top->addLayout(left, 1);
    top->addWidget(m_fontGroup, 0, Qt::AlignTop);

    m_effectsGroup = new QGroupBox(this);
    auto *effects = new QGridLayout(m_effectsGroup);
    auto swatch = [this] {
        auto *button = new QPushButton(m_effectsGroup);
        button->setFixedSize(kSwatchSide, kSwatchSide);
        return button;
    };
    m_fontColorLabel = new QLabel(m_effectsGroup);
    m_fontColor = swatch();
    m_background = new QCheckBox(m_effectsGroup);
    m_backgroundColor = swatch();
    m_paddingLabel = new QLabel(m_effectsGroup);
    m_padding = spinBox(m_effectsGroup, 0, kMaxPadding);
    m_shadow = new QCheckBox(m_effectsGroup);
    m_shadowColor = swatch();
    m_shadowOffsetLabel = new QLabel(m_effectsGroup);
    m_shadowX = spinBox(m_effectsGroup, -kMaxShadowOffset, kMaxShadowOffset);
    m_shadowY = spinBox(m_effectsGroup, -kMaxShadowOffset, kMaxShadowOffset);
    m_outline = new QCheckBox(m_effectsGroup);
    m_outlineColor = swatch();
    m_outlineWidthLabel = new QLabel(m_effectsGroup);
    m_outlineWidth = spinBox(m_effectsGroup, TextOverlayData::kMinOutlineWidth,
                             TextOverlayData::kMaxOutlineWidth);
    m_opacityLabel = new QLabel(m_effectsGroup);
    m_opacity = new QSlider(Qt::Horizontal, m_effectsGroup);
    m_opacity->setRange(0, TextOverlayData::kMaxOpacity);
    m_opacityValue = new QLabel(m_effectsGroup);
    m_opacityValue->setMinimumWidth(28);
    effects->addWidget(m_fontColorLabel, 0, 0);
    effects->addWidget(m_fontColor, 0, 1);
    effects->addWidget(m_background, 1, 0);
    effects->addWidget(m_backgroundColor, 1, 1);
    effects->addWidget(m_paddingLabel, 1, 2);
    effects->addWidget(m_padding, 1, 3);
    effects->addWidget(m_shadow, 2, 0);
    effects->addWidget(m_shadowColor, 2, 1);
    effects->addWidget(m_shadowOffsetLabel, 2, 2);
    effects->addWidget(m_shadowX, 2, 3);
    effects->addWidget(m_shadowY, 2, 4);
    effects->addWidget(m_outline, 3, 0);
    effects->addWidget(m_outlineColor, 3, 1);
    effects->addWidget(m_outlineWidthLabel, 3, 2);
    effects->addWidget(m_outlineWidth, 3, 3);
    effects->addWidget(m_opacityLabel, 4, 0);
    effects->addWidget(m_opacity, 4, 1, 1, 3);
    effects->addWidget(m_opacityValue, 4, 4);

    m_scrollGroup = new QGroupBox(this);
    m_scrollForm = new QFormLayout(m_scrollGroup);
    m_scroll = new QCheckBox(m_scrollGroup);
    m_direction = new QComboBox(m_scrollGroup);
    for (int direction : {TextOverlayData::ScrollNone, TextOverlayData::ScrollLeftToRight,
                          TextOverlayData::ScrollRightToLeft})
        m_direction->addItem(QString(), direction);
    m_passes =
        spinBox(m_scrollGroup, TextOverlayData::kMinScrollTimes, TextOverlayData::kMaxScrollTimes);
    m_speed =
        spinBox(m_scrollGroup, TextOverlayData::kMinScrollStep, TextOverlayData::kMaxScrollStep);
    m_scrollForm->addRow(m_scroll);
    m_scrollForm->addRow(new QLabel(m_scrollGroup), m_direction);
    m_scrollForm->addRow(new QLabel(m_scrollGroup), m_passes);
    m_scrollForm->addRow(new QLabel(m_scrollGroup), m_speed);
    auto *bottom = new QHBoxLayout;
    bottom->addWidget(m_effectsGroup, 3);
    bottom->addWidget(m_scrollGroup, 2);

    m_buttons = new QDialogButtonBox(this);
    m_ok = m_buttons->addButton(QString(), QDialogButtonBox::AcceptRole);
    m_cancel = m_buttons->addButton(QString(), QDialogButtonBox::RejectRole);
    m_ok->setDefault(true);

    auto *layout = new QVBoxLayout(this);
    layout->addWidget(m_text);
    layout->addWidget(m_limitNote);
    layout->addLayout(top, 1);
    layout->addLayout(bottom);
    layout->addWidget(m_buttons);

    retranslateUi();
    showData();
    m_showing = false;

    connect(m_buttons, &QDialogButtonBox::accepted, this, &TextEffectDialog::onAccept);
    connect(m_buttons, &QDialogButtonBox::rejected, this, &TextEffectDialog::onReject);
    connect(m_text, &QPlainTextEdit::textChanged, this, &TextEffectDialog::updatePreview);
    connect(m_font, &QFontComboBox::currentFontChanged, this, [this](const QFont &font) {
        // The family changes only when the operator picks one: a record naming a font this
        // system lacks keeps its name.
        if (m_showing)
            return;
        m_data.fontFamily = font.family();
        updatePreview();
    });
    auto position = [this] {
        if (m_showing)
            return;
        const QSizeF scene = OverlayDrawing::sceneSize();
        m_data.posX = m_x->value() / scene.width();
        m_data.posY = m_y->value() / scene.height();
        updatePreview();
    };
    connect(m_x, &QSpinBox::valueChanged, this, position);
    connect(m_y, &QSpinBox::valueChanged, this, position);
    for (QSpinBox *box :
         {m_size, m_padding, m_shadowX, m_shadowY, m_outlineWidth, m_passes, m_speed})
        connect(box, &QSpinBox::valueChanged, this, &TextEffectDialog::updatePreview);
    for (QCheckBox *box :
         {m_bold, m_italic, m_underline, m_strikeOut, m_background, m_shadow, m_outline, m_scroll})
        connect(box, &QCheckBox::toggled, this, &TextEffectDialog::updatePreview);
    connect(m_opacity, &QSlider::valueChanged, this, &TextEffectDialog::updatePreview);
    connect(m_direction, &QComboBox::currentIndexChanged, this, &TextEffectDialog::updatePreview);
    connect(m_fontColor, &QPushButton::clicked, this, &TextEffectDialog::chooseFontColor);
    connect(m_backgroundColor, &QPushButton::clicked, this,
            &TextEffectDialog::chooseBackgroundColor);
    connect(m_shadowColor, &QPushButton::clicked, this, &TextEffectDialog::chooseShadowColor);
    connect(m_outlineColor, &QPushButton::clicked, this, &TextEffectDialog::chooseOutlineColor);
    connect(m_preview, &TextPreviewWidget::positionChanged, this,
            &TextEffectDialog::placeFromPreview);
    updatePreview();
    m_text->setFocus();
}

void TextEffectDialog::setProgramSize(QSize size)
{
    m_preview->setProgramSize(size);
}

void TextEffectDialog::showData()
{
    const bool wasShowing = m_showing;
    m_showing = true;
    const TextOverlayData &d = m_data;
    m_text->setPlainText(d.text);
    const QSizeF scene = OverlayDrawing::sceneSize();
    m_x->setValue(int(std::lround(d.posX * scene.width())));
    m_y->setValue(int(std::lround(d.posY * scene.height())));
    m_font->setCurrentFont(QFont(d.fontFamily));
    m_size->setValue(d.fontPointSize);
    m_bold->setChecked(d.bold);
    m_italic->setChecked(d.italic);
    m_underline->setChecked(d.underline);
    m_strikeOut->setChecked(d.strikeOut);
    paintSwatch(m_fontColor, d.fontColor);
    m_background->setChecked(d.backgroundEnabled);
    paintSwatch(m_backgroundColor, d.backgroundColor);
    m_padding->setValue(d.backgroundPadding);
    m_shadow->setChecked(d.shadow);
    paintSwatch(m_shadowColor, d.shadowColor);
    m_shadowX->setValue(d.shadowOffsetX);
    m_shadowY->setValue(d.shadowOffsetY);
    m_outline->setChecked(d.outline);
    paintSwatch(m_outlineColor, d.outlineColor);
    m_outlineWidth->setValue(d.outlineWidth);
    m_opacity->setValue(d.opacity);
    m_scroll->setChecked(d.scrollable);
    m_direction->setCurrentIndex(std::max(0, m_direction->findData(d.scrollDirection)));
    m_passes->setValue(d.scrollTimes);
    m_speed->setValue(d.scrollStep);
    m_showing = wasShowing;
}

void TextEffectDialog::readFields()
{
    // Position, font family and colours are written by their own handlers; the rest is read
    // here, within the ranges the fields allow.
    TextOverlayData &d = m_data;
    d.text = m_text->toPlainText();
    d.fontPointSize = m_size->value();
    d.bold = m_bold->isChecked();
    d.italic = m_italic->isChecked();
    d.underline = m_underline->isChecked();
    d.strikeOut = m_strikeOut->isChecked();
    d.backgroundEnabled = m_background->isChecked();
    d.backgroundPadding = m_padding->value();
    d.shadow = m_shadow->isChecked();
    d.shadowOffsetX = m_shadowX->value();
    d.shadowOffsetY = m_shadowY->value();
    d.outline = m_outline->isChecked();
    d.outlineWidth = m_outlineWidth->value();
    d.opacity = m_opacity->value();
    d.scrollable = m_scroll->isChecked();
    d.scrollDirection = m_direction->currentData().toInt();
    d.scrollTimes = m_passes->value();
    d.scrollStep = m_speed->value();
}

void TextEffectDialog::updatePreview()
{
    if (m_showing)
        return;
    readFields();
    m_opacityValue->setText(QString::number(m_opacity->value()));
    for (QWidget *field : {static_cast<QWidget *>(m_direction), static_cast<QWidget *>(m_passes),
                           static_cast<QWidget *>(m_speed)})
        field->setEnabled(m_scroll->isChecked());
    m_ok->setEnabled(!m_data.text.trimmed().isEmpty());
    m_preview->setText(m_data);
}

void TextEffectDialog::placeFromPreview(QPoint scene)
{
    m_showing = true;
    m_x->setValue(scene.x());
    m_y->setValue(scene.y());
    m_showing = false;
    const QSizeF size = OverlayDrawing::sceneSize();
    m_data.posX = scene.x() / size.width();
    m_data.posY = scene.y() / size.height();
    updatePreview();
}

void TextEffectDialog::paintSwatch(QPushButton *button, const QColor &color)
{
    const QString name = color.name(color.alpha() < 255 ? QColor::HexArgb : QColor::HexRgb);
    button->setStyleSheet(QStringLiteral("background-color:%1; border:1px solid #777;").arg(name));
    button->setToolTip(name);
}

void TextEffectDialog::chooseColor(QColor TextOverlayData::*field, QPushButton *button,
                                   const QString &title)
{
    const QColor chosen =
        QColorDialog::getColor(m_data.*field, this, title, QColorDialog::ShowAlphaChannel);
    if (!chosen.isValid())
        return;
    m_data.*field = chosen;
    paintSwatch(button, chosen);
    updatePreview();
}

void TextEffectDialog::chooseFontColor()
{
    chooseColor(&TextOverlayData::fontColor, m_fontColor, tr("Text Color"));
}

void TextEffectDialog::chooseBackgroundColor()
{
    chooseColor(&TextOverlayData::backgroundColor, m_backgroundColor, tr("Background Color"));
}

void TextEffectDialog::chooseShadowColor()
{
    chooseColor(&TextOverlayData::shadowColor, m_shadowColor, tr("Shadow Color"));
}

void TextEffectDialog::chooseOutlineColor()
{
    chooseColor(&TextOverlayData::outlineColor, m_outlineColor, tr("Outline Color"));
}

void TextEffectDialog::onAccept()
{
    readFields();
    if (m_data.text.trimmed().isEmpty())
        return; // an empty text would never be drawn
    accept();
}

void TextEffectDialog::onReject()
{
    reject();
}

void TextEffectDialog::done(int result)
{
    if (result != Accepted)
        m_data = m_original;
    QDialog::done(result);
}

void TextEffectDialog::applyArrangementStyle()
{
    // Opened from the schedule window: framed groups with the schedule's blue titles, so the
    // dialog reads as part of that window's work rather than the live desk's.
    setStyleSheet(QStringLiteral(
        "QGroupBox { border:1px solid #3d6fa5; border-radius:4px; margin-top:14px; "
        "padding-top:6px; }"
        "QGroupBox::title { subcontrol-origin:margin; left:10px; padding:0 4px; color:#8fb8e8; "
        "font-weight:bold; }"
        "QPlainTextEdit { border:1px solid #3d6fa5; }"));
}

void TextEffectDialog::changeEvent(QEvent *event)
{
    if (event->type() == QEvent::LanguageChange)
        retranslateUi();
    QDialog::changeEvent(event);
}

void TextEffectDialog::retranslateUi()
{
    setWindowTitle(tr("Text Effects"));
    m_text->setPlaceholderText(tr("Type the text to show on the program"));
    m_text->setAccessibleName(tr("Overlay text"));
    m_xLabel->setText(tr("X:"));
    m_yLabel->setText(tr("Y:"));
    m_x->setAccessibleName(tr("Text X"));
    m_y->setAccessibleName(tr("Text Y"));
    const QString placeTip = tr("Position of the text's top-left corner in the 640 x 360 scene, "
                                "whatever the output size.");
    m_x->setToolTip(placeTip);
    m_y->setToolTip(placeTip);

    m_fontGroup->setTitle(tr("Font Style"));
    auto label = [](QFormLayout *form, QWidget *field, const QString &text) {
        if (auto *l = qobject_cast<QLabel *>(form->labelForField(field)))
            l->setText(text);
    };
    label(m_fontForm, m_font, tr("Font:"));
    label(m_fontForm, m_size, tr("Size:"));
    m_font->setAccessibleName(tr("Font"));
    m_size->setAccessibleName(tr("Font size"));
    const std::pair<QCheckBox *, QString> styles[] = {{m_bold, tr("Bold")},
                                                      {m_italic, tr("Italic")},
                                                      {m_underline, tr("Underline")},
                                                      {m_strikeOut, tr("Strikeout")}};
    for (const auto &[box, text] : styles) {
        box->setText(text);
        box->setAccessibleName(text);
    }

    // A group's title takes '&' for a shortcut key; this one is meant as the word.
    m_effectsGroup->setTitle(tr("Colors & Effects").replace(QLatin1Char('&'), QLatin1String("&&")));
    m_fontColorLabel->setText(tr("Text color:"));
    m_fontColor->setAccessibleName(tr("Text color"));
    m_background->setText(tr("Background"));
    m_background->setAccessibleName(tr("Background"));
    m_backgroundColor->setAccessibleName(tr("Background color"));
    m_paddingLabel->setText(tr("Padding:"));
    m_padding->setAccessibleName(tr("Background padding"));
    m_shadow->setText(tr("Shadow"));
    m_shadow->setAccessibleName(tr("Shadow"));
    m_shadowColor->setAccessibleName(tr("Shadow color"));
    m_shadowOffsetLabel->setText(tr("Offset:"));
    m_shadowX->setAccessibleName(tr("Shadow offset X"));
    m_shadowY->setAccessibleName(tr("Shadow offset Y"));
    m_outline->setText(tr("Outline"));
    m_outline->setAccessibleName(tr("Outline"));
    m_outlineColor->setAccessibleName(tr("Outline color"));
    m_outlineWidthLabel->setText(tr("Width:"));
    m_outlineWidth->setAccessibleName(tr("Outline width"));
    m_opacityLabel->setText(tr("Opacity:"));
    m_opacity->setAccessibleName(tr("Opacity"));
    m_opacityValue->setAccessibleName(tr("Opacity value"));
    const QString unitsTip = tr("In units of the 640 x 360 scene; scaled with the output.");
    for (QWidget *field :
         {static_cast<QWidget *>(m_padding), static_cast<QWidget *>(m_shadowX),
          static_cast<QWidget *>(m_shadowY), static_cast<QWidget *>(m_outlineWidth)})
        field->setToolTip(unitsTip);

    m_scrollGroup->setTitle(tr("Scroll"));
    m_scroll->setText(tr("Enable"));
    m_scroll->setAccessibleName(tr("Scroll text"));
    label(m_scrollForm, m_direction, tr("Direction:"));
    label(m_scrollForm, m_passes, tr("Passes:"));
    label(m_scrollForm, m_speed, tr("Speed:"));
    m_direction->setItemText(0, tr("None"));
    m_direction->setItemText(1, tr("Left to Right"));
    m_direction->setItemText(2, tr("Right to Left"));
    m_direction->setAccessibleName(tr("Scroll direction"));
    m_passes->setAccessibleName(tr("Scroll passes"));
    m_passes->setToolTip(
        tr("Number of complete passes. After the last pass, the text remains off-screen."));
    m_speed->setAccessibleName(tr("Scroll speed"));
    m_speed->setToolTip(tr("Scroll speed (higher is faster)."));

    m_ok->setText(tr("OK"));
    m_ok->setAccessibleName(tr("OK"));
    m_cancel->setText(tr("Cancel"));
    m_cancel->setAccessibleName(tr("Cancel"));
}

} // namespace selvane
