// Our JSON text beside that of Qt's own writer.
#include "tests/support/test.h"

#include <core/jsontext.h>

#include <QtCore/QJsonArray>

#include <limits>

TEST(JsonText, IsWhatQtWrites)
{
    QString characters = u"😀 \U0010ffff"_s;
    for (char16_t character = 0; character < 0xd800; ++character)
        characters += QChar(character);
    // Lengths around those at which CBOR takes one byte more, and texts that Qt keeps as ASCII, UTF-8 and UTF-16.
    QJsonArray texts{u""_s, characters};
    for (const qsizetype length : {23, 24, 255, 256, 65535, 65536})
        for (const QChar character : {u'a', u'ы', u'"', u'\x1f'})
            texts.append(QString(length, character));
    for (qsizetype place = 0; place < 17; ++place)
        texts.append(QString(17, u'a').replace(place, 1, u'\\'));
    QJsonArray numbers{0.1, -2.5e-9, 5.0, 1e15, 1e300, qInf(), std::numeric_limits<qint64>::min()};
    for (const qint64 number : {0, 23, 24, 255, 256, 65536, 0x7fff'ffff, -1, -24, -25, -257})
        numbers.append(number);
    const QJsonArray others{true, false, QJsonValue(), QJsonObject(), QJsonArray(), QJsonArray{QJsonArray{1, 2}, 3}};
    const QJsonDocument documents[] = {QJsonDocument(), QJsonDocument(QJsonObject()), QJsonDocument(texts),
                                       QJsonDocument(QJsonObject{{u"numbers"_s, numbers}, {characters, others}})};
    for (const QJsonDocument &json : documents)
        EXPECT_EQ(jsontext::compact(json), json.toJson(QJsonDocument::Compact));
}
