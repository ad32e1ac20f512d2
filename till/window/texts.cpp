// Numbers and translations for the window.
#include "texts.h"

#include <QtCore/QFile>
#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>
#include <QtCore/QLocale>

using namespace Qt::Literals::StringLiterals;

namespace till {

QString moneyText(Money sum)
{
    return QLocale().toString(sum.toRubles(), 'f', 2);
}

QString quantityText(double quantity)
{
    return QLocale().toString(quantity, 'g', QLocale::FloatingPointShortest);
}

EnglishTranslator::EnglishTranslator()
{
    QFile file(u":/window/english.json"_s);
    if (!file.open(QFile::ReadOnly))
        return;
    const QJsonObject texts = QJsonDocument::fromJson(file.readAll()).object();
    for (auto text = texts.constBegin(); text != texts.constEnd(); ++text)
        m_texts.insert(text.key(), text.value().toString());
}

QString EnglishTranslator::translate(const char *, const char *source, const char *, int) const
{
    return m_texts.value(QString::fromUtf8(source));
}

} // namespace till
