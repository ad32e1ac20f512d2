// The window's palette and style sheet.
#include "theme.h"

#include <QtGui/QPainter>
#include <QtGui/QPalette>
#include <QtSvg/QSvgRenderer>
#include <QtWidgets/QApplication>
#include <QtWidgets/QStyleFactory>

#include <tuple>

using namespace Qt::Literals::StringLiterals;

namespace till {

namespace {

/// Name, light, dark; no name begins with another one.
constexpr std::tuple<QStringView, QRgb, QRgb> colours[]{
    {u"ground", 0xeef1f4, 0x161b21},   {u"surface", 0xffffff, 0x20272f}, {u"text", 0x1b2430, 0xe8edf2},
    {u"muted", 0x57636f, 0xa3b0bc},    {u"line", 0xcdd4db, 0x3a4551},    {u"accent", 0x0b5fa5, 0x7cc0ff},
    {u"onAccent", 0xffffff, 0x0c1620}, {u"warning", 0xa8321c, 0xff9a80}, {u"good", 0x1d6b34, 0x86d99a}};

const QString styleSheet = uR"(
* { font-size: 15px; outline: 0; } QMainWindow { background: @ground; }
QLabel[role="muted"] { color: @muted; } QLabel[role="title"] { font-size: 20px; font-weight: 600; }
QLabel[role="big"] { font-size: 44px; font-weight: 700; }
QLabel[role="figure"] { font-size: 18px; font-weight: 600; }
QLabel#message { font-size: 17px; padding: 6px 12px; border-radius: 6px; }
QLabel#message[tone="warning"] { background: @warning; color: @onAccent; }
QLabel#message[tone="wait"] { background: @accent; color: @onAccent; }
QLineEdit, QTableView, QPlainTextEdit, QToolButton, QPushButton, QFrame[role="card"] { background: @surface;
            border: 2px solid @line; border-radius: 8px; }
QLineEdit { padding: 6px 10px; font-size: 20px; }
QLineEdit[tone="code"] { font-size: 30px; letter-spacing: 10px; }
QTableView { font-size: 16px; } QPlainTextEdit { font-family: monospace; }
QTableView::item { padding: 4px 5px; border: 0; } QTableView::item:selected { background: @accent; color: @onAccent; }
QHeaderView { background: @surface; }
QHeaderView::section { background: @surface; color: @muted; border: 0; border-bottom: 1px solid @line; padding: 6px 5px;
            font-size: 14px; font-weight: 400; }
QToolButton, QPushButton { padding: 6px 0; } QToolButton:pressed, QPushButton:pressed { background: @line; }
QToolButton:disabled, QPushButton:disabled { color: @muted; background: @ground; border-color: @ground; }
QAbstractButton[role="main"]:enabled { background: @accent; color: @onAccent; border-color: @accent; font-weight: 600; }
QLineEdit:focus, QTableView:focus, QPlainTextEdit:focus, QAbstractButton:focus { border: 3px solid @accent; }
QAbstractButton[role="main"]:focus { border-color: @text; }
QStatusBar { background: @surface; border-top: 1px solid @line; } QStatusBar::item { border: 0; }
QStatusBar QLabel, QStatusBar QPushButton { font-size: 14px; padding: 3px 8px; }
QStatusBar QWidget[tone="warning"] { color: @warning; font-weight: 600; }
QStatusBar QWidget[tone="good"] { color: @good; }
)"_s;

} // namespace

QColor Theme::colour(QStringView name) const
{
    for (const auto &[known, light, dark] : colours) {
        if (known == name)
            return QColor(isDark ? dark : light);
    }
    return {};
}

void Theme::apply(QApplication &application) const
{
    application.setStyle(QStyleFactory::create(u"Fusion"_s));
    const QColor text = colour(u"text");
    const QColor surface = colour(u"surface");
    const QColor line = colour(u"line");
    QPalette palette(text, surface, line, line, line, text, text, surface, colour(u"ground"));
    palette.setColor(QPalette::PlaceholderText, colour(u"muted"));
    palette.setColor(QPalette::Highlight, colour(u"accent"));
    palette.setColor(QPalette::HighlightedText, colour(u"onAccent"));
    application.setPalette(palette);
    QString sheet = styleSheet;
    for (const auto &[name, light, dark] : colours)
        sheet.replace(u'@' + name.toString(), colour(name).name());
    application.setStyleSheet(sheet);
}

QIcon Theme::icon(const QString &name, const QColor &colour) const
{
    static QSvgRenderer icons(u":/window/icons.svg"_s);
    constexpr int size = 96; // device pixels: enough for twice the size shown
    QIcon icon;
    for (const auto &[mode, paint] :
         {std::pair(QIcon::Normal, colour), std::pair(QIcon::Disabled, this->colour(u"muted"))}) {
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
