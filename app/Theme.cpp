#include "app/Theme.h"

#include <QApplication>
#include <QPalette>
#include <QStyleFactory>

namespace selvane {

void applyDarkTheme(QApplication &app)
{
    if (app.property("selvaneDarkTheme").toBool())
        return;
    app.setProperty("selvaneDarkTheme", true);
    if (QStyle *fusion = QStyleFactory::create("Fusion"))
        app.setStyle(fusion);
    QPalette p;
    const QColor window(0x20, 0x22, 0x26), base(0x17, 0x19, 0x1d), text(0xe6, 0xe8, 0xeb);
    const QColor button(0x2d, 0x30, 0x36), highlight(0x2f, 0x7d, 0xd1), dim(0x7a, 0x80, 0x8a);
    p.setColor(QPalette::Window, window);
    p.setColor(QPalette::WindowText, text);
    p.setColor(QPalette::Base, base);
    p.setColor(QPalette::AlternateBase, window);
    p.setColor(QPalette::ToolTipBase, base);
    p.setColor(QPalette::ToolTipText, text);
    p.setColor(QPalette::Text, text);
    p.setColor(QPalette::Button, button);
    p.setColor(QPalette::ButtonText, text);
    p.setColor(QPalette::BrightText, QColor(0xff, 0x5a, 0x5a));
    p.setColor(QPalette::Link, highlight.lighter(130));
    p.setColor(QPalette::Highlight, highlight);
    p.setColor(QPalette::HighlightedText, Qt::white);
    p.setColor(QPalette::PlaceholderText, dim);
    for (QPalette::ColorRole role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText})
        p.setColor(QPalette::Disabled, role, dim);
    app.setPalette(p);
    app.setStyleSheet(
        "QDockWidget::title { background: #2a2d33; padding: 4px; }"
        "QStatusBar QLabel { padding: 0 6px; }"
        "QLabel#statusChip { border-radius: 3px; padding: 1px 6px; background: #2d3036; }");
}

} // namespace selvane
