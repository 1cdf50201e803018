#include "panels/DrawingToolBar.h"

#include "engine/Engine.h"
#include "engine/OverlayDrawing.h"

#include <QAction>
#include <QActionGroup>
#include <QColorDialog>
#include <QEvent>
#include <QImageWriter>
#include <QLabel>
#include <QLineF>
#include <QSpinBox>
#include <QToolButton>
#include <QUndoStack>
#include <cmath>
#include <functional>

namespace selvane {

namespace {

// Distance from p to the segment a-b.
double distanceToSegment(QPointF p, QPointF a, QPointF b)
{
    const QPointF ab = b - a;
    const double length2 = ab.x() * ab.x() + ab.y() * ab.y();
    double t = length2 > 0 ? QPointF::dotProduct(p - a, ab) / length2 : 0.0;
    t = std::clamp(t, 0.0, 1.0);
    return QLineF(p, a + t * ab).length();
}

bool strokeNear(const DoodleStroke &stroke, QPointF point, double radius)
{
    const double reach = radius + stroke.width / 2;
    if (stroke.points.size() == 1)
        return QLineF(point, stroke.points.first()).length() <= reach;
    for (int i = 1; i < stroke.points.size(); ++i)
        if (distanceToSegment(point, stroke.points[i - 1], stroke.points[i]) <= reach)
            return true;
    return false;
}

} // namespace

DrawingToolBar::DrawingToolBar(Engine *engine, QWidget *parent) : QToolBar(parent), m_engine(engine)
{
    setObjectName("drawingToolBar");
    m_strokes = engine->doodle();

    auto *tools = new QActionGroup(this);
    tools->setExclusionPolicy(QActionGroup::ExclusionPolicy::ExclusiveOptional);
    m_pen = addAction(QString());
    m_eraser = addAction(QString());
    for (QAction *action : {m_pen, m_eraser}) {
        action->setCheckable(true);
        tools->addAction(action);
        connect(action, &QAction::toggled, this, [this] { emit toolChanged(tool()); });
    }
    m_colourButton = new QToolButton(this);
    m_colourButton->setObjectName("drawingColour");
    addWidget(m_colourButton);
    connect(m_colourButton, &QToolButton::clicked, this, &DrawingToolBar::chooseColour);
    m_widthLabel = new QLabel(this);
    addWidget(m_widthLabel);
    m_width = new QSpinBox(this);
    m_width->setRange(1, 40);
    m_width->setValue(4);
    addWidget(m_width);
    connect(m_width, &QSpinBox::valueChanged, this, &DrawingToolBar::penChanged);
    addSeparator();
    // Every change of the drawing is one command on the undo stack: Undo and Redo (Ctrl+Z,
    // Ctrl+Shift+Z) here, and in the window's Edit menu.
    m_history = new QUndoStack(this);
    m_history->setUndoLimit(kHistoryLimit);
    m_undo = m_history->createUndoAction(this);
    m_undo->setObjectName("drawingUndoAction");
    m_undo->setShortcut(QKeySequence::Undo);
    m_redo = m_history->createRedoAction(this);
    m_redo->setObjectName("drawingRedoAction");
    m_redo->setShortcut(QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_Z));
    addAction(m_undo);
    addAction(m_redo);
    m_clear = addAction(QString(), this, &DrawingToolBar::clear);
    addSeparator();
    m_show = addAction(QString());
    m_show->setCheckable(true);
    m_show->setChecked(engine->doodleVisible());
    connect(m_show, &QAction::toggled, this,
            [this](bool shown) { m_engine->setDoodleVisible(shown); });
    showColour();
    retranslateUi();
}

DrawingToolBar::Tool DrawingToolBar::tool() const
{
    if (m_pen->isChecked())
        return Tool::Pen;
    if (m_eraser->isChecked())
        return Tool::Eraser;
    return Tool::None;
}

void DrawingToolBar::setTool(Tool tool)
{
    m_pen->setChecked(tool == Tool::Pen);
    m_eraser->setChecked(tool == Tool::Eraser);
}

void DrawingToolBar::setPenColour(const QColor &colour)
{
    if (!colour.isValid())
        return;
    m_colour = colour;
    showColour();
    emit penChanged();
}

double DrawingToolBar::penWidth() const
{
    return m_width->value();
}

double DrawingToolBar::eraserWidth() const
{
    // The eraser is a little wider than the pen, so that it takes what the pen drew.
    return std::max(8.0, 3.0 * m_width->value());
}

void DrawingToolBar::chooseColour()
{
    setPenColour(
        QColorDialog::getColor(m_colour, this, tr("Pen Colour"), QColorDialog::ShowAlphaChannel));
}

void DrawingToolBar::showColour()
{
    m_colourButton->setStyleSheet(
        QString("background-color:%1; border:1px solid #777; min-width:22px; min-height:22px;")
            .arg(m_colour.name(QColor::HexArgb)));
}

namespace {

// One change of the drawing: the strokes before and after it.
class DrawingChange : public QUndoCommand
{
public:
    DrawingChange(const QString &text, QList<DoodleStroke> before, QList<DoodleStroke> after,
                  std::function<void(const QList<DoodleStroke> &)> apply)
        : QUndoCommand(text), m_before(std::move(before)), m_after(std::move(after)),
          m_apply(std::move(apply))
    {
    }
    void redo() override { m_apply(m_after); }
    void undo() override { m_apply(m_before); }

private:
    QList<DoodleStroke> m_before;
    QList<DoodleStroke> m_after;
    std::function<void(const QList<DoodleStroke> &)> m_apply;
};

} // namespace

void DrawingToolBar::change(const QString &text, const QList<DoodleStroke> &strokes)
{
    m_history->push(new DrawingChange(text, m_strokes, strokes,
                                      [this](const QList<DoodleStroke> &now) { apply(now); }));
}

void DrawingToolBar::apply(const QList<DoodleStroke> &strokes)
{
    m_strokes = strokes;
    m_engine->setDoodle(m_strokes);
}

bool DrawingToolBar::canUndo() const
{
    return m_history->canUndo();
}

void DrawingToolBar::addStroke(const DoodleStroke &stroke)
{
    if (stroke.points.isEmpty())
        return;
    QList<DoodleStroke> strokes = m_strokes;
    strokes.append(stroke);
    change(tr("Stroke"), strokes);
}

void DrawingToolBar::eraseAt(QPointF point, double radius)
{
    QList<DoodleStroke> kept;
    for (const DoodleStroke &stroke : m_strokes)
        if (!strokeNear(stroke, point, radius))
            kept.append(stroke);
    if (kept.size() != m_strokes.size())
        change(tr("Erase"), kept);
}

void DrawingToolBar::clear()
{
    if (!m_strokes.isEmpty())
        change(tr("Clear Drawing"), {});
}

bool DrawingToolBar::exportPng(const QString &path, QSize size, QString *error) const
{
    QImageWriter writer(path, "png");
    if (!writer.write(OverlayDrawing::doodle(m_strokes, size))) {
        *error = writer.errorString();
        return false;
    }
    return true;
}

void DrawingToolBar::changeEvent(QEvent *event)
{
    if (event->type() == QEvent::LanguageChange)
        retranslateUi();
    QToolBar::changeEvent(event);
}

void DrawingToolBar::retranslateUi()
{
    setWindowTitle(tr("Drawing Tools"));
    setAccessibleName(tr("Drawing Tools"));
    m_pen->setText(tr("Pen"));
    m_pen->setToolTip(tr("Draw on the program preview"));
    m_eraser->setText(tr("Eraser"));
    m_eraser->setToolTip(tr("Remove strokes by touching them on the program preview"));
    m_colourButton->setToolTip(tr("Pen colour"));
    m_colourButton->setAccessibleName(tr("Pen colour"));
    m_widthLabel->setText(tr("Width:"));
    m_width->setAccessibleName(tr("Pen width"));
    m_width->setToolTip(tr("Pen width in scene units (the scene is 640 x 360)"));
    m_undo->setToolTip(tr("Undo the last change of the drawing"));
    m_redo->setToolTip(tr("Redo the change undone last"));
    m_clear->setText(tr("Clear Drawing"));
    m_show->setText(tr("Show on Program"));
    m_show->setToolTip(tr("Show the drawing on the program and in the outputs"));
    // Tool buttons of actions take the action's text as their accessible name.
    for (QAction *action : {m_pen, m_eraser, m_clear, m_show})
        if (QWidget *button = widgetForAction(action))
            button->setAccessibleName(action->text());
    // Undo and Redo name what they undo ("Undo Erase"); their buttons keep one name.
    if (QWidget *button = widgetForAction(m_undo))
        button->setAccessibleName(tr("Undo"));
    if (QWidget *button = widgetForAction(m_redo))
        button->setAccessibleName(tr("Redo"));
}

} // namespace selvane
