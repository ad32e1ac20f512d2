// Reads typed lines. Whatever does not begin with a word is taken for goods: that is what a scanner types.
#include "typedstep.h"

#include "catalogue.h"

#include <core/basicexception.h>
#include <core/plaintext.h>

#include <algorithm>

using namespace Qt::Literals::StringLiterals;

namespace till {

namespace {

enum class Takes { Nothing, Text, Line, Change };

struct Word
{
    QString name;
    Step::Kind kind;
    Takes takes;
    QString example;
    QString meaning;
};

const QList<Word> &words()
{
    static const QList<Word> list{
        {u"phone"_s, Step::Kind::Phone, Takes::Text, u"phone +79001234567"_s, u"карта покупателя по телефону"_s},
        {u"card"_s, Step::Kind::Card, Takes::Text, u"card 7770000000001"_s, u"карта по номеру"_s},
        {u"nocard"_s, Step::Kind::RemoveCard, Takes::Nothing, u"nocard"_s, u"убрать карту с чека"_s},
        {u"price"_s, Step::Kind::Price, Takes::Nothing, u"price"_s, u"рассчитать баллы"_s},
        {u"spend"_s, Step::Kind::Spend, Takes::Nothing, u"spend"_s, u"списать баллы"_s},
        {u"subtotal"_s, Step::Kind::Subtotal, Takes::Nothing, u"subtotal"_s, u"подытог"_s},
        {u"change"_s, Step::Kind::Change, Takes::Change, u"change 2 quantity 5 price 45.50"_s,
         u"изменить количество или цену строки"_s},
        {u"remove"_s, Step::Kind::Remove, Takes::Line, u"remove 2"_s, u"убрать строку"_s},
        {u"restore"_s, Step::Kind::Restore, Takes::Nothing, u"restore"_s, u"отменить последнее изменение строки"_s},
        {u"park"_s, Step::Kind::Park, Takes::Nothing, u"park"_s, u"отложить чек"_s},
        {u"take"_s, Step::Kind::Take, Takes::Text, u"take 1"_s, u"вернуться к отложенному чеку"_s},
        {u"close"_s, Step::Kind::Close, Takes::Nothing, u"close"_s, u"закрыть чек"_s},
        {u"void"_s, Step::Kind::Void, Takes::Nothing, u"void"_s, u"аннулировать чек"_s},
    };
    return list;
}

[[noreturn]] void refuse(const Word &word)
{
    throw BasicException(u"Команда не понята. Введите, например: %1"_s.arg(word.example));
}

int lineNumber(const QString &text, const Word &word)
{
    bool isNumber = false;
    const int line = text.toInt(&isNumber);
    if (!isNumber)
        refuse(word);
    return line;
}

void readChange(const QStringList &parts, const Word &word, Step &step)
{
    if (parts.size() != 4 && parts.size() != 6)
        refuse(word);
    step.line = lineNumber(parts[1], word);
    for (qsizetype i = 2; i < parts.size(); i += 2) {
        if (parts[i] == "quantity"_L1)
            step.quantity = parseQuantity(parts[i + 1]);
        else if (parts[i] == "price"_L1)
            step.price = parsePrice(parts[i + 1]);
        else
            refuse(word);
    }
}

Step readWord(const Word &word, const QStringList &parts)
{
    Step step;
    step.kind = word.kind;
    const bool fits = word.takes == Takes::Nothing ? parts.size() == 1 : parts.size() > 1;
    if (!fits || (word.takes == Takes::Line && parts.size() != 2))
        refuse(word);
    switch (word.takes) {
    case Takes::Nothing:
        break;
    case Takes::Text:
        step.number = parts.sliced(1).join(u' ');
        break;
    case Takes::Line:
        step.line = lineNumber(parts[1], word);
        break;
    case Takes::Change:
        readChange(parts, word, step);
        break;
    }
    return step;
}

Step readGoodsLine(const QString &line, const Catalogue &catalogue)
{
    constexpr qsizetype longestList = 10;
    const QList<Goods> found = catalogue.find(line);
    if (found.isEmpty())
        throw BasicException(
            u"Товар «%1» не найден. Введите штрихкод, часть названия или help"_s.arg(plainText(line, 40)));
    if (found.size() > 1) {
        QStringList names;
        for (const Goods &goods : found.first(std::min(longestList, found.size())))
            names.append(goods.barcode + u' ' + plainText(goods.name, 40));
        throw BasicException(u"Подходит несколько товаров, введите штрихкод:\n"_s + names.join(u'\n'));
    }
    Step step;
    step.kind = Step::Kind::Add;
    step.goods = found.constFirst();
    return step;
}

} // namespace

QStringList typedWords()
{
    QStringList names{u"help"_s};
    for (const Word &word : words())
        names.append(word.name);
    return names;
}

QString typedHelp()
{
    QString help = u"4600000000011                    товар по штрихкоду или названию\n"
                   "3*4600000000011                  то же с количеством\n"_s;
    for (const Word &word : words())
        help += word.example.leftJustified(33) + word.meaning + u'\n';
    return help + u"Ctrl-D                           выйти; чек сохраняется\n"_s;
}

Step readTypedStep(const QString &line, const Catalogue &catalogue)
{
    const QStringList parts = line.simplified().split(u' ');
    const auto word = std::find_if(words().cbegin(), words().cend(),
                                   [&parts](const Word &known) { return known.name == parts.constFirst(); });
    return word == words().cend() ? readGoodsLine(line, catalogue) : readWord(*word, parts);
}

} // namespace till
