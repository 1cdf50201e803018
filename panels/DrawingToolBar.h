#pragma once

// The drawing tools (View -> Drawing Tools): pen and eraser on the program preview, the pen's
// colour and width, undo and redo, clear, and whether the drawing is shown on the program. It
// keeps the strokes (in scene units), each change a command on its undo stack, and hands every
// change to the engine, which draws them over the program and into the outputs.
//
// GUI thread only. Emits toolChanged when the pen or the eraser is taken up or put down, penChanged
// when its colour or width changes.

#include "engine/EngineTypes.h"

#include <QList>
#include <QToolBar>

class QAction;
class QLabel;
class QSpinBox;
class QUndoStack;
class QToolButton;

namespace selvane {

class Engine;

class DrawingToolBar : public QToolBar
{
    Q_OBJECT

public:
    enum class Tool
    {
        None,
        Pen,
        Eraser,
    };

    DrawingToolBar(Engine *engine, QWidget *parent = nullptr);

    Tool tool() const;
    void setTool(Tool tool);
    QColor penColour() const { return m_colour; }
    void setPenColour(const QColor &colour);
    double penWidth() const;
    double eraserWidth() const;
    QList<DoodleStroke> strokes() const { return m_strokes; }
    bool canUndo() const;
    // Undo and Redo of the drawing, for the window's Edit menu too.
    QAction *undoAction() const { return m_undo; }
    QAction *redoAction() const { return m_redo; }

    // The drawing as a transparent PNG at `size` (the program's size). False with the reason
    // when the file cannot be written.
    bool exportPng(const QString &path, QSize size, QString *error) const;

public slots:
    void addStroke(const DoodleStroke &stroke);
    // Removes the strokes that pass within `radius` (scene units) of `point`.
    void eraseAt(QPointF point, double radius);
    void clear();

signals:
    void toolChanged(selvane::DrawingToolBar::Tool tool);
    // The pen's colour or width changed.
    void penChanged();

protected:
    void changeEvent(QEvent *event) override;

private:
    // A change the operator made, as one undoable command named `text`.
    void change(const QString &text, const QList<DoodleStroke> &strokes);
    void apply(const QList<DoodleStroke> &strokes);
    void chooseColour();
    void showColour();
    void retranslateUi();

    Engine *m_engine = nullptr;
    QList<DoodleStroke> m_strokes;
    QUndoStack *m_history = nullptr; // the changes, newest last
    QColor m_colour = QColor(255, 0, 0);

    QAction *m_pen = nullptr;
    QAction *m_eraser = nullptr;
    QToolButton *m_colourButton = nullptr;
    QLabel *m_widthLabel = nullptr;
    QSpinBox *m_width = nullptr;
    QAction *m_undo = nullptr;
    QAction *m_redo = nullptr;
    QAction *m_clear = nullptr;
    QAction *m_show = nullptr;
    static constexpr int kHistoryLimit = 100;
};

} // namespace selvane
