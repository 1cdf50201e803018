#pragma once

// The multiview: preview and program side by side over the four channels, each picture labelled
// with its number and source, the program in a red frame and the preview in a green one (a
// channel on either wears the same colour), the program's level meter and the clock. A window
// of its own, for a second screen: full screen on a screen chosen from its context menu
// (Esc or a double click leaves it).
//
// It shows what it is given (images, labels, tally, level); the window feeds it from the
// pictures already made for its previews, and makes none of them while it is closed.
// GUI thread only. Emits closed() and tilesResized() (the sizes pictures are best made at).

#include <QImage>
#include <QWidget>
#include <array>

class QTimer;

namespace selvane {

class LevelMeter;

class MultiviewWindow : public QWidget
{
    Q_OBJECT

public:
    enum Tile
    {
        PreviewTile,
        ProgramTile,
        FirstChannelTile, // channels 1-4 follow
        kTiles = FirstChannelTile + 4
    };

    explicit MultiviewWindow(QWidget *parent = nullptr);

    void setImage(int tile, const QImage &image);
    void setSource(int channel, const QString &source);
    // The channels on program and on preview (-1: none).
    void setTally(int program, int preview);
    void setProgramLevel(float peak, float rms);
    // Where a tile's picture goes, in device pixels.
    QSize tileSize(int tile) const;
    QRect tileRect(int tile) const;
    void showOnScreen(int screen); // -1: as a window

signals:
    void closed();
    void tilesResized();

protected:
    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void closeEvent(QCloseEvent *event) override;
    void contextMenuEvent(QContextMenuEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void mouseDoubleClickEvent(QMouseEvent *event) override;
    void changeEvent(QEvent *event) override;

private:
    QString label(int tile) const;
    QColor tally(int tile) const;
    void layoutTiles();

    std::array<QImage, kTiles> m_images;
    std::array<QString, 4> m_sources;
    std::array<QRect, kTiles> m_rects;
    int m_program = -1;
    int m_preview = -1;
    LevelMeter *m_meter = nullptr;
    QTimer *m_clock = nullptr;
    QRect m_clockRect;
};

} // namespace selvane
