// The window's palette and style sheet.
#include "theme.h"

#include <QtCore/QFile>
#include <QtGui/QPainter>
#include <QtGui/QPalette>
#include <QtSvg/QSvgRenderer>
#include <QtWidgets/QApplication>
#include <QtWidgets/QStyleFactory>

#include <utility>

using namespace Qt::Literals::StringLiterals;

namespace till {

namespace {

const QString styleSheet = uR"(
* { font-size: 15px; }
QMainWindow, QWidget#page { background: @ground; }
QLabel[role="muted"] { color: @muted; }
QLabel[role="title"] { font-size: 20px; font-weight: 600; }
QLabel[role="big"] { font-size: 44px; font-weight: 700; }
QLabel[role="figure"] { font-size: 18px; font-weight: 600; }
QLabel#message { font-size: 17px; padding: 6px 12px; border-radius: 6px; }
QLabel#message[tone="warning"] { background: @warning; color: @onAccent; }
QLabel#message[tone="wait"] { background: @accent; color: @onAccent; }
QFrame[role="card"] { background: @surface; border: 1px solid @line; border-radius: 8px; }
QLineEdit { background: @surface; border: 2px solid @line; border-radius: 6px; padding: 6px 10px; font-size: 20px;
            selection-background-color: @accent; selection-color: @onAccent; }
QLineEdit:focus { border-color: @accent; }
QLineEdit#code { font-size: 34px; letter-spacing: 10px; }
QTableView, QPlainTextEdit { background: @surface; border: 1px solid @line; border-radius: 8px; font-size: 16px;
            selection-background-color: @accent; selection-color: @onAccent; outline: 0; }
QTableView:focus, QPlainTextEdit:focus { border: 2px solid @accent; }
QTableView::item { padding: 4px 8px; border: 0; }
QTableView::item:selected { background: @accent; color: @onAccent; }
QPlainTextEdit { font-family: monospace; font-size: 15px; }
QHeaderView::section { background: @surface; color: @muted; border: 0; border-bottom: 1px solid @line; padding: 6px 8px;
            font-size: 14px; }
QToolButton, QPushButton { background: @surface; border: 2px solid @line; border-radius: 8px; padding: 6px 4px;
            font-size: 15px; }
QToolButton:hover, QPushButton:hover { border-color: @muted; }
QToolButton:pressed, QPushButton:pressed { background: @line; }
QToolButton:disabled, QPushButton:disabled { color: @muted; background: @ground; border-color: @ground; }
QToolButton:focus, QPushButton:focus { border: 3px solid @accent; }
QPushButton[role="main"], QToolButton[role="main"] { background: @accent; color: @onAccent; border-color: @accent;
            font-weight: 600; }
QPushButton[role="main"]:disabled, QToolButton[role="main"]:disabled { background: @ground; color: @muted;
            border-color: @ground; font-weight: 400; }
QPushButton[role="main"]:focus, QToolButton[role="main"]:focus { border: 3px solid @text; }
QStatusBar { background: @surface; border-top: 1px solid @line; }
QStatusBar::item { border: 0; }
QStatusBar QLabel, QStatusBar QPushButton { font-size: 14px; padding: 3px 8px; }
QStatusBar QPushButton { border: 1px solid @line; }
QStatusBar QLabel[tone="warning"], QStatusBar QPushButton[tone="warning"] { color: @warning; font-weight: 600; }
QStatusBar QLabel[tone="good"] { color: @good; }
QScrollBar:vertical { background: @ground; width: 14px; }
QScrollBar::handle:vertical { background: @muted; border-radius: 6px; min-height: 30px; margin: 1px; }
QScrollBar::add-line, QScrollBar::sub-line { height: 0; width: 0; }
)"_s;

} // namespace

Theme Theme::light()
{
    return {.ground = QColor(0xeef1f4),
            .surface = QColor(0xffffff),
            .text = QColor(0x1b2430),
            .muted = QColor(0x57636f),
            .line = QColor(0xcdd4db),
            .accent = QColor(0x0b5fa5),
            .onAccent = QColor(0xffffff),
            .warning = QColor(0xa8321c),
            .good = QColor(0x1d6b34)};
}

Theme Theme::dark()
{
    return {.ground = QColor(0x161b21),
            .surface = QColor(0x20272f),
            .text = QColor(0xe8edf2),
            .muted = QColor(0xa3b0bc),
            .line = QColor(0x3a4551),
            .accent = QColor(0x7cc0ff),
            .onAccent = QColor(0x0c1620),
            .warning = QColor(0xff9a80),
            .good = QColor(0x86d99a)};
}

void Theme::apply(QApplication &application) const
{
    application.setStyle(QStyleFactory::create(u"Fusion"_s));
    QPalette palette;
    palette.setColor(QPalette::Window, ground);
    palette.setColor(QPalette::Base, surface);
    palette.setColor(QPalette::WindowText, text);
    palette.setColor(QPalette::Text, text);
    palette.setColor(QPalette::Button, surface);
    palette.setColor(QPalette::ButtonText, text);
    palette.setColor(QPalette::PlaceholderText, muted);
    palette.setColor(QPalette::Highlight, accent);
    palette.setColor(QPalette::HighlightedText, onAccent);
    application.setPalette(palette);
    QString sheet = styleSheet;
    // The longer name first: "@text" is no part of another one, "@accent" none of "@onAccent".
    const std::pair<QString, QColor> colours[]{
        {u"@onAccent"_s, onAccent}, {u"@ground"_s, ground},   {u"@surface"_s, surface},
        {u"@text"_s, text},         {u"@muted"_s, muted},     {u"@line"_s, line},
        {u"@accent"_s, accent},     {u"@warning"_s, warning}, {u"@good"_s, good}};
    for (const auto &[name, colour] : colours)
        sheet.replace(name, colour.name());
    application.setStyleSheet(sheet);
}

QIcon Theme::icon(const QString &name, const QColor &colour) const
{
    static QSvgRenderer icons(u":/window/icons.svg"_s);
    constexpr int size = 96; // device pixels: enough for twice the size shown
    QIcon icon;
    for (const auto &[mode, paint] : {std::pair(QIcon::Normal, colour), std::pair(QIcon::Disabled, muted)}) {
        QPixmap picture(size, size);
        picture.fill(Qt::transparent);
        QPainter painter(&picture);
        icons.render(&painter, name, QRectF(0, 0, size, size));
        painter.setCompositionMode(QPainter::CompositionMode_SourceIn);
        painter.fillRect(picture.rect(), paint);
        painter.end();
        icon.addPixmap(picture, mode);
    }
    return icon;
}

} // namespace till
