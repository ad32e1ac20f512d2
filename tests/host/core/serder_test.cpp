// Host values on disk: each keeps what it says, and none is lost silently.
#include <core/basicexception.h>
#include <core/serder.h>
#include <core/setting.h>
#include <document/documentbonusrecord.h>

#include <gtest/gtest.h>

#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>

using namespace Qt::Literals::StringLiterals;

TEST(Serder, WritesWhateverCanBeTakenApart)
{
    const QDate day(2024, 2, 29);
    const std::pair<QVariant, const char *> cases[] = {
        {{}, "null"},
        {true, "true"},
        {-7, "-7"},
        {qulonglong{1} << 40, "1099511627776"},
        {0.5, "0.5"},
        {u"й"_s, R"("й")"},
        {QDateTime(day, QTime(12, 0, 0, 7)), R"("2024-02-29T12:00:00.007")"},
        {day, R"("2024-02-29")"},
        {QVariant::fromValue(tr::Tr(u"k"_s, u"текст"_s)), R"({"key":"k","ru":"текст"})"},
        {QVariant::fromValue(Setting::Kind::Choice), "3"},
        {QStringList{u"a"_s, u"b"_s}, R"(["a","b"])"},
        {QVariantMap{{u"list"_s, QVariantList{1, day}}}, R"({"list":[1,"2024-02-29"]})"},
        {QJsonObject{{u"a"_s, QJsonArray{1}}}, R"({"a":[1]})"},
        {QVariant::fromValue(QList<DocumentBonusRecord>{{u"7"_s, 1.5, {}, u"c"_s, 2}}),
         R"([{"amount":1.5,"cardNumber":"7","dateTime":"","position":2,"userCode":"c"}])"},
    };
    for (const auto &[value, json] : cases) {
        const QByteArray text = QJsonDocument(QJsonArray{serder::toJson(value)}).toJson(QJsonDocument::Compact);
        EXPECT_EQ(text.toStdString(), '[' + std::string(json) + ']');
    }
    EXPECT_THROW(serder::toJson(QVariant::fromValue(static_cast<QObject *>(nullptr))), BasicException);
}
