// The palette of the window. Its style sheet, theme.qss, has a name after an @ where a colour goes.
#include "theme.h"

#include <QtCore/QResource>
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

} // namespace

QColor Theme::colour(QStringView name) const
{
    for (const auto &[known, light, dark] : colours) {
        if (known == name)
            return QColor(isDark ? dark : light);
    }
    return {};
}

void Theme::apply() const
{
    QApplication::setStyle(QStyleFactory::create(u"Fusion"_s));
    const QColor text = colour(u"text");
    const QColor surface = colour(u"surface");
    const QColor line = colour(u"line");
    QPalette palette(text, surface, line, line, line, text, text, surface, colour(u"ground"));
    palette.setColor(QPalette::PlaceholderText, colour(u"muted"));
    QApplication::setPalette(palette);
    QString sheet = QString::fromUtf8(QResource(u":/window/theme.qss"_s).uncompressedData());
    for (const auto &[name, light, dark] : colours)
        sheet.replace(u'@' + name.toString(), colour(name).name());
    qApp->setStyleSheet(sheet);
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
        {
            QPainter painter(&picture);
            icons.render(&painter, name);
            painter.setCompositionMode(QPainter::CompositionMode_SourceIn);
            painter.fillRect(picture.rect(), paint);
        }
        icon.addPixmap(picture, mode);
    }
    return icon;
}

} // namespace till
