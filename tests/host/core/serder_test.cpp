// Values on their way to a JSON file and back.
#include "serder_test.h"

#include <core/basicexception.h>
#include <core/serder.h>

#include <gmock/gmock.h>

#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>

using namespace Qt::Literals::StringLiterals;

namespace {

QVariant throughJson(const QVariant &value)
{
    const QJsonObject object{{u"value"_s, QJsonValue::fromVariant(serder::toPlain(value))}};
    return QJsonDocument::fromJson(QJsonDocument(object).toJson()).object().toVariantMap().value(u"value"_s);
}

const StoredSample sample{.name = u"Имя"_s,
                          .amount = 0.1,
                          .kind = StoredSample::Kind::Second,
                          .time = QDateTime({2024, 1, 31}, {23, 59, 59, 7}, Qt::UTC),
                          .noTime = {},
                          .title = {u"key"_s, u"Текст"_s}};

} // namespace

TEST(Serder, GadgetsComeBackEqualFromJson)
{
    StoredSample restored;
    serder::mapToGadget(StoredSample::staticMetaObject, &restored, throughJson(QVariant::fromValue(sample)).toMap());
    EXPECT_EQ(restored, sample);

    const QVariantList list = throughJson(QVariant::fromValue(QList<StoredSample>{sample, {}})).toList();
    ASSERT_EQ(list.size(), 2);
    serder::mapToGadget(StoredSample::staticMetaObject, &restored, list.first().toMap());
    EXPECT_EQ(restored, sample);
}

TEST(Serder, TextsComeBack)
{
    const tr::Tr text(u"key"_s, u"Текст"_s);
    EXPECT_EQ(serder::toTr(serder::toVariant(text)), text);
    EXPECT_EQ(serder::toTr(u"Текст"_s), tr::Tr(u"Текст"_s));
    EXPECT_EQ(serder::toTr({}), tr::Tr());

    const QStringList texts{u"a"_s, u""_s, u"б"_s};
    EXPECT_EQ(serder::toStringList(serder::toVariant(texts)), texts);
    EXPECT_EQ(serder::toStringList(throughJson(texts)), texts);
}

TEST(Serder, TakesJsonAndNestedContainersApart)
{
    const QVariantMap nested{{u"list"_s, QVariantList{1, 2.5, u"x"_s, true, QVariant()}},
                             {u"json"_s, QJsonObject{{u"a"_s, 1}}},
                             {u"jsonText"_s, QJsonValue(u"Серебро"_s)}};
    const QVariantMap plain = serder::toPlain(nested).toMap();
    EXPECT_EQ(plain.value(u"list"_s), nested.value(u"list"_s));
    EXPECT_EQ(plain.value(u"json"_s).toMap(), (QVariantMap{{u"a"_s, 1}}));
    EXPECT_EQ(plain.value(u"jsonText"_s), QVariant(u"Серебро"_s));
}

TEST(Serder, RefusesWhatItWouldLose)
{
    try {
        serder::toPlain(QVariantMap{{u"deep"_s, QVariant::fromValue(Opaque{})}});
        FAIL();
    } catch (const BasicException &fault) {
        EXPECT_THAT(fault.what(), testing::HasSubstr("Opaque"));
    }
    StoredSample restored;
    EXPECT_THROW(serder::mapToGadget(StoredSample::staticMetaObject, &restored, {{u"amount"_s, u"много"_s}}),
                 BasicException);
    EXPECT_NO_THROW(serder::mapToGadget(StoredSample::staticMetaObject, &restored, {{u"unknown"_s, 1}}));
}
