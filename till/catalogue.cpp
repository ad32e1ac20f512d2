// Reads the catalogue strictly, and finds articles by barcode or name.
#include "catalogue.h"

#include "jsonnode.h"

#include <core/basicexception.h>

#include <QtCore/QRegularExpression>

#include <algorithm>

using namespace Qt::Literals::StringLiterals;

namespace till {

namespace {

/// Normalised for comparison: letter case and "ё" do not matter.
QString folded(const QString &text)
{
    return text.toCaseFolded().replace(u'ё', u'е');
}

/// Nothing when the text is not a number with at most so many digits; a point and a comma are the same.
std::optional<double> readNumber(const QString &text, int decimals)
{
    const QRegularExpression form(u"^\\d{1,6}([.,]\\d{1,%1})?$"_s.arg(decimals));
    if (!form.match(text.trimmed()).hasMatch())
        return std::nullopt;
    return text.trimmed().replace(u',', u'.').toDouble(); // reads a point in every locale
}

} // namespace

double parseQuantity(const QString &text)
{
    const double quantity = readNumber(text, 3).value_or(0);
    if (quantity <= 0)
        throw BasicException(
            u"Количество \"%1\" не подходит. Введите число больше нуля и меньше миллиона, например 3 или 1,25"_s.arg(
                text));
    return quantity;
}

Money parsePrice(const QString &text)
{
    if (const std::optional<double> rubles = readNumber(text, 2))
        return Money::fromRubles(*rubles);
    throw BasicException(u"Цена \"%1\" не подходит. Введите рубли и копейки, например 45,50"_s.arg(text));
}

Catalogue::Catalogue(const QString &fileName)
{
    const JsonNode root = JsonNode::readFile(fileName);
    root.requireObject({u"goods"_s});
    for (const JsonNode &node : root.at(u"goods"_s).items()) {
        const Goods article = readGoods(node);
        if (node.has(u"quantity"_s))
            node.at(u"quantity"_s).fail(u"в справочнике количества не бывает"_s);
        if (m_byBarcode.contains(article.barcode))
            node.at(u"barcode"_s).fail(u"штрихкод %1 уже есть выше"_s.arg(article.barcode));
        m_byBarcode.insert(article.barcode, m_goods.size());
        m_goods.append(article);
    }
}

QList<Goods> Catalogue::search(const QString &words) const
{
    const QStringList wanted = folded(words).split(u' ', Qt::SkipEmptyParts);
    QList<Goods> found;
    for (const Goods &article : m_goods) {
        const QString name = folded(article.name);
        if (std::all_of(wanted.cbegin(), wanted.cend(), [&name](const QString &word) { return name.contains(word); }))
            found.append(article);
    }
    return found;
}

QList<Goods> Catalogue::find(const QString &entry) const
{
    const qsizetype star = entry.indexOf(u'*');
    const double quantity = star < 0 ? 1 : parseQuantity(entry.left(star).trimmed());
    const QString article = entry.mid(star + 1).trimmed();
    if (article.isEmpty())
        throw BasicException(u"Товар не указан. Введите штрихкод или название"_s);
    const qsizetype known = m_byBarcode.value(article, -1);
    QList<Goods> found = known < 0 ? search(article) : QList<Goods>{m_goods.at(known)};
    for (Goods &goods : found)
        goods.quantity = quantity;
    return found;
}

std::pair<Catalogue, QString> openCatalogue(const QString &fileName)
{
    try {
        return {Catalogue(fileName), {}};
    } catch (const BasicException &error) {
        return {{}, u"Товаров нет: %1; проверьте ключ Till:goods"_s.arg(error.text().ru())};
    }
}

} // namespace till
