#include "panels/TextOverlayPanel.h"
#include "engine/OverlayDrawing.h"

#include "engine/Engine.h"
#include "panels/TextEffectDialog.h"

#include <QEvent>
#include <QHBoxLayout>
#include <QLabel>
#include <QListWidget>
#include <QMessageBox>
#include <QPushButton>
#include <QVBoxLayout>
#include <algorithm>

namespace selvane {

namespace {

// Texts a schedule shows have ids from here on; the panel's own stay below.
// A duplicate lands this many scene units right of and below its original.
constexpr double kDuplicateStep = 12.0;

} // namespace

TextOverlayPanel::TextOverlayPanel(Engine *engine, QWidget *parent)
    : QWidget(parent), m_engine(engine)
{
    setObjectName("textOverlayPanel");
    m_heading = new QLabel(this);
    m_heading->setWordWrap(true);
    m_list = new QListWidget(this);
    m_list->setObjectName("textOverlayList");
    m_list->setMinimumHeight(90);
    m_list->setTextElideMode(Qt::ElideRight);
    m_list->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    m_list->setUniformItemSizes(true);
    // On and off plainly told apart on the dark theme and on a chosen row: a dark box, or a
    // light one.
    m_list->setStyleSheet(
        "QListWidget::indicator { width:11px; height:11px; border:1px solid #8a909a; "
        "border-radius:2px; background:#17191d; }"
        "QListWidget::indicator:checked { background:#e6e8eb; border-color:#e6e8eb; }"
        "QListWidget::indicator:disabled { border-color:#555a63; }"
        "QListWidget::indicator:checked:disabled { background:#7a808a; }");
    m_add = new QPushButton(this);
    m_edit = new QPushButton(this);
    m_duplicate = new QPushButton(this);
    m_remove = new QPushButton(this);
    auto *buttons = new QHBoxLayout;
    for (QPushButton *button : {m_add, m_edit, m_duplicate, m_remove})
        buttons->addWidget(button);
    auto *layout = new QVBoxLayout(this);
    layout->addWidget(m_heading);
    layout->addWidget(m_list, 1);
    layout->addLayout(buttons);

    connect(m_add, &QPushButton::clicked, this, &TextOverlayPanel::addText);
    connect(m_edit, &QPushButton::clicked, this, &TextOverlayPanel::editSelected);
    connect(m_duplicate, &QPushButton::clicked, this, &TextOverlayPanel::duplicateSelected);
    connect(m_remove, &QPushButton::clicked, this, &TextOverlayPanel::removeSelected);
    connect(m_list, &QListWidget::currentRowChanged, this, &TextOverlayPanel::updateButtons);
    connect(m_list, &QListWidget::itemChanged, this, &TextOverlayPanel::onItemChanged);
    connect(m_list, &QListWidget::itemDoubleClicked, this, [this](QListWidgetItem *item) {
        if (editable(item->data(Qt::UserRole).toInt())) {
            m_list->setCurrentItem(item);
            editSelected();
        }
    });
    connect(engine, &Engine::overlaysChanged, this, &TextOverlayPanel::refresh);
    retranslateUi();
}

bool TextOverlayPanel::editable(int id) const
{
    return id >= 0 && !Engine::isScheduleOverlay(id);
}

int TextOverlayPanel::selectedId() const
{
    const QListWidgetItem *item = m_list->currentItem();
    return item ? item->data(Qt::UserRole).toInt() : -1;
}

void TextOverlayPanel::select(int id)
{
    for (int row = 0; row < m_list->count(); ++row)
        if (m_list->item(row)->data(Qt::UserRole).toInt() == id)
            m_list->setCurrentRow(row);
}

void TextOverlayPanel::refresh()
{
    const QList<TextOverlayData> texts = m_engine->textOverlays();
    const bool sameRows = texts.size() == m_texts.size() &&
                          std::equal(texts.cbegin(), texts.cend(), m_texts.cbegin(),
                                     [](const auto &a, const auto &b) { return a.id == b.id; });
    const bool sameLook =
        sameRows && std::equal(texts.cbegin(), texts.cend(), m_texts.cbegin(),
                               [](const auto &a, const auto &b) {
                                   return a.text == b.text && a.enabled == b.enabled;
                               });
    m_texts = texts;
    if (sameLook)
        return; // a change elsewhere (media, doodle, a text's style): the rows stand
    if (!sameRows) {
        rebuildList();
        return;
    }
    // The same texts in the same order: the rows change in place (this may run while the list
    // reports a row's box being ticked).
    const QSignalBlocker block(m_list);
    for (int row = 0; row < m_texts.size(); ++row)
        showRow(m_list->item(row), m_texts[row]);
}

void TextOverlayPanel::rebuildList()
{
    const int selected = selectedId();
    {
        const QSignalBlocker block(m_list);
        m_list->clear();
        for (const TextOverlayData &text : m_texts) {
            auto *item = new QListWidgetItem(m_list);
            item->setData(Qt::UserRole, text.id);
            showRow(item, text);
        }
    }
    select(selected);
    updateButtons();
}

void TextOverlayPanel::showRow(QListWidgetItem *item, const TextOverlayData &text)
{
    QString words = text.text.simplified();
    if (words.isEmpty())
        words = tr("(no text)");
    if (!editable(text.id)) {
        words += tr("  [schedule]");
        // Greyed and out of reach: the schedule owns it.
        item->setFlags(Qt::ItemNeverHasChildren);
    } else {
        item->setFlags(Qt::ItemIsSelectable | Qt::ItemIsEnabled | Qt::ItemIsUserCheckable |
                       Qt::ItemNeverHasChildren);
    }
    item->setText(words);
    item->setToolTip(text.text);
    const Qt::CheckState state = text.enabled ? Qt::Checked : Qt::Unchecked;
    if (item->checkState() != state || !item->data(Qt::CheckStateRole).isValid())
        item->setCheckState(state);
}

void TextOverlayPanel::updateButtons()
{
    const bool mine = editable(selectedId());
    m_edit->setEnabled(mine);
    m_duplicate->setEnabled(mine);
    m_remove->setEnabled(mine);
}

void TextOverlayPanel::onItemChanged(QListWidgetItem *item)
{
    const int id = item->data(Qt::UserRole).toInt();
    if (!editable(id))
        return;
    const bool on = item->checkState() == Qt::Checked;
    for (TextOverlayData text : m_texts)
        if (text.id == id && text.enabled != on) {
            text.enabled = on;
            m_engine->setTextOverlay(text);
            return;
        }
}

bool TextOverlayPanel::roomForOne()
{
    const Problem full = m_engine->roomForTextOverlay();
    if (full)
        refuse(problemText(full));
    return !full;
}

bool TextOverlayPanel::runDialog(TextOverlayData &text)
{
    TextEffectDialog dialog(text, this);
    dialog.setProgramSize(m_engine->programSize());
    if (dialog.exec() != QDialog::Accepted)
        return false;
    text = dialog.data();
    return true;
}

void TextOverlayPanel::addText()
{
    if (!roomForOne())
        return;
    TextOverlayData text;
    if (!runDialog(text))
        return;
    // Another caller may have filled the list while the dialog was open: the engine says.
    Problem problem;
    const int id = m_engine->addTextOverlay(text, &problem);
    if (problem)
        refuse(problemText(problem));
    else
        select(id);
}

void TextOverlayPanel::editSelected()
{
    const int id = selectedId();
    if (!editable(id))
        return;
    const auto found = std::find_if(m_texts.cbegin(), m_texts.cend(),
                                    [id](const TextOverlayData &text) { return text.id == id; });
    if (found == m_texts.cend())
        return;
    TextOverlayData text = *found;
    if (!runDialog(text))
        return;
    // Removed meanwhile: it comes back only when there is room for it.
    if (const Problem problem = m_engine->setTextOverlay(text)) {
        refuse(problemText(problem));
        return;
    }
    select(id);
}

void TextOverlayPanel::duplicateSelected()
{
    const int id = selectedId();
    if (!editable(id) || !roomForOne())
        return;
    for (TextOverlayData text : m_texts)
        if (text.id == id) {
            const QSizeF scene = OverlayDrawing::sceneSize();
            text.posX = std::min(1.0, text.posX + kDuplicateStep / scene.width());
            text.posY = std::min(1.0, text.posY + kDuplicateStep / scene.height());
            Problem problem;
            const int copy = m_engine->addTextOverlay(text, &problem);
            if (problem)
                refuse(problemText(problem));
            else
                select(copy);
            return;
        }
}

void TextOverlayPanel::removeSelected()
{
    const int id = selectedId();
    if (editable(id))
        m_engine->removeTextOverlay(id);
}

void TextOverlayPanel::refuse(const QString &message)
{
    auto *box =
        new QMessageBox(QMessageBox::Warning, tr("Text Overlay"), message, QMessageBox::Ok, this);
    box->setObjectName("textOverlayMessage");
    box->setAttribute(Qt::WA_DeleteOnClose);
    box->open();
}

void TextOverlayPanel::changeEvent(QEvent *event)
{
    if (event->type() == QEvent::LanguageChange)
        retranslateUi();
    QWidget::changeEvent(event);
}

void TextOverlayPanel::retranslateUi()
{
    m_heading->setText(tr("Texts over the program (at most %1). Tick a text to show it; "
                          "double-click it to edit.")
                           .arg(OverlayScene::kMaxTextOverlays));
    m_list->setAccessibleName(tr("Text overlays"));
    m_add->setText(tr("Add..."));
    m_add->setAccessibleName(tr("Add Text"));
    m_edit->setText(tr("Edit..."));
    m_edit->setAccessibleName(tr("Edit Text"));
    m_duplicate->setText(tr("Duplicate"));
    m_duplicate->setAccessibleName(tr("Duplicate Text"));
    m_remove->setText(tr("Remove"));
    m_remove->setAccessibleName(tr("Remove Text"));
    m_texts = m_engine->textOverlays();
    rebuildList(); // the rows' words are read again
}

} // namespace selvane
