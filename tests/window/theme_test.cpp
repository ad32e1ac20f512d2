// What can be read of the window, and in which language.
#include "tests/support/file.h"
#include "tests/support/test.h"
#include "till/window/theme.h"

#include <QtCore/QDirIterator>
#include <QtCore/QRegularExpression>
#include <QtGui/QColorSpace>
#include <QtGui/QColorTransform>

namespace {

/// As the web's accessibility guidelines define it.
double luminance(const QColor &colour)
{
    static const auto linear = QColorSpace(QColorSpace::SRgb).transformationToColorSpace(QColorSpace::SRgbLinear);
    const QColor light = linear.map(colour);
    return 0.2126 * light.redF() + 0.7152 * light.greenF() + 0.0722 * light.blueF();
}

TEST(Theme, CanBeRead)
{
    const std::tuple<QStringView, QStringView, double> pairs[]{
        {u"text", u"ground", 4.5},      {u"text", u"surface", 4.5},  {u"text", u"line", 4.5},
        {u"muted", u"ground", 4.5},     {u"muted", u"surface", 4.5}, {u"onAccent", u"accent", 4.5},
        {u"onAccent", u"warning", 4.5}, {u"good", u"surface", 4.5},  {u"warning", u"surface", 4.5},
        {u"accent", u"surface", 3},     {u"accent", u"ground", 3}};
    for (const bool isDark : {false, true}) {
        const till::Theme theme{isDark};
        for (const auto &[text, ground, least] : pairs) {
            const double one = luminance(theme.colour(text)) + 0.05;
            const double other = luminance(theme.colour(ground)) + 0.05;
            EXPECT_GE(std::max(one, other) / std::min(one, other), least) << text.toUtf8().constData() << isDark;
        }
    }
}

TEST(Texts, HaveTheirEnglish)
{
    QJsonObject english = QJsonDocument::fromJson(readFile(u":/window/english.json"_s)).object();
    static const QRegularExpression call(uR"re(\b(?:tr|each)\(\s*((?:"(?:[^"\\]|\\.)*"\s*)+))re"_s);
    static const QRegularExpression seam(u"\"\\s*\"|^\"|\"\\s*$"_s);
    QDirIterator files(QStringLiteral(KVO_SOURCES "/till/window"), {u"*.cpp"_s, u"*.h"_s});
    QSet<QString> texts;
    while (files.hasNext()) {
        for (const auto &match : call.globalMatch(QString::fromUtf8(readFile(files.next()))))
            texts.insert(match.captured(1).trimmed().remove(seam).replace(u"\\n"_s, u"\n"_s));
    }
    const QStringList keys = english.keys();
    for (const QString &text : (texts + QSet(keys.cbegin(), keys.cend())))
        EXPECT_TRUE(texts.contains(text) && english.contains(text)) << text.toStdString();
}

} // namespace
