// Finds unknown entries and values that nobody can use.
#include "settingfault.h"

#include <net/httpaddress.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <numeric>
#include <optional>
#include <utility>

using namespace Qt::Literals::StringLiterals;

namespace till {

namespace {

using Kind = SettingFault::Kind;

/// How many letters have to be put in, left out, replaced or swapped with their neighbour, ignoring case.
qsizetype distance(const QString &one, const QString &other)
{
    const QString from = one.toCaseFolded();
    const QString to = other.toCaseFolded();
    QList<qsizetype> row(to.size() + 1);
    std::iota(row.begin(), row.end(), 0);
    QList<qsizetype> above;
    for (qsizetype i = 0; i < from.size(); ++i) {
        const QList<qsizetype> twoAbove = std::exchange(above, row);
        row[0] = i + 1;
        for (qsizetype j = 0; j < to.size(); ++j) {
            row[j + 1] = std::min({above[j] + (from[i] == to[j] ? 0 : 1), row[j] + 1, above[j + 1] + 1});
            if (i > 0 && j > 0 && from[i] == to[j - 1] && from[i - 1] == to[j])
                row[j + 1] = std::min(row[j + 1], twoAbove[j - 1] + 1);
        }
    }
    return row.last();
}

/// The nearest candidate; empty when none is near.
QString likely(const QString &name, const QStringList &candidates)
{
    QString nearest;
    qsizetype best = std::max<qsizetype>(2, name.size() / 3) + 1;
    for (const QString &candidate : candidates) {
        const qsizetype letters = distance(name, candidate);
        if (letters < best && letters < candidate.size()) {
            best = letters;
            nearest = candidate;
        }
    }
    return nearest;
}

SettingFault unknown(const Config::Entry &entry, const QList<Setting> &settings)
{
    QStringList sections;
    QStringList names;
    QString elsewhere;
    for (const Setting &setting : settings) {
        sections.append(setting.section());
        if (setting.section() == entry.section)
            names.append(setting.name());
        if (setting.name() == entry.name)
            elsewhere = setting.key;
    }
    if (names.isEmpty())
        return {Kind::UnknownSection, entry, likely(entry.section, sections)};
    const QString nearest = likely(entry.name, names);
    return {Kind::UnknownKey, entry, nearest.isEmpty() ? elsewhere : entry.section + u':' + nearest};
}

std::optional<Kind> numberFault(const Setting &setting, const QString &value, QString &expected)
{
    const auto isNumber = [&setting](const QString &text, double &number) {
        bool ok = false;
        number = setting.kind == Setting::Kind::Whole ? static_cast<double>(text.toLongLong(&ok)) : text.toDouble(&ok);
        return ok && std::isfinite(number);
    };
    double number = 0;
    if (isNumber(value, number))
        return number >= setting.lowest && number <= setting.highest ? std::nullopt : std::optional(Kind::OutOfRange);
    const QString withPoint = QString(value).replace(u',', u'.');
    if (setting.kind != Setting::Kind::Decimal || value.count(u',') != 1 || !isNumber(withPoint, number))
        return Kind::NotANumber;
    expected = withPoint;
    return Kind::DecimalComma;
}

/// Whether a path can be put behind it; a name and a password belong into settings of their own.
bool isBaseAddress(const QUrl &url)
{
    return isHttpAddress(url) && url.userInfo().isEmpty() && !url.hasQuery() && !url.hasFragment();
}

std::optional<Kind> valueFault(const Setting &setting, const QString &value, QString &expected)
{
    expected = rangeOf(setting);
    switch (setting.kind) {
    case Setting::Kind::Text:
        return value.contains(setting.placeholder) ? std::nullopt : std::optional(Kind::Incomplete);
    case Setting::Kind::Choice:
        return setting.choices.contains(value, Qt::CaseInsensitive) ? std::nullopt : std::optional(Kind::NotAChoice);
    case Setting::Kind::Address:
        return isBaseAddress(QUrl(value, QUrl::TolerantMode)) ? std::nullopt : std::optional(Kind::WrongForm);
    case Setting::Kind::Path: // With another beginning no URL can be made of host and path.
        return value.startsWith(u'/') ? std::nullopt : std::optional(Kind::WrongForm);
    case Setting::Kind::Whole:
    case Setting::Kind::Decimal:
        break;
    }
    return numberFault(setting, value, expected);
}

} // namespace

QString rangeOf(const Setting &setting)
{
    switch (setting.kind) {
    case Setting::Kind::Choice:
        return setting.choices.join(u", "_s);
    case Setting::Kind::Address:
        return u"http[s]://HOST[:PORT]"_s;
    case Setting::Kind::Path:
        return u"/PATH"_s;
    case Setting::Kind::Text:
        return setting.placeholder;
    case Setting::Kind::Whole:
    case Setting::Kind::Decimal:
        break;
    }
    if (setting.highest == std::numeric_limits<double>::max())
        return {};
    return u"%1 ... %2"_s.arg(QString::number(setting.lowest, 'f', 0), QString::number(setting.highest, 'f', 0));
}

QList<SettingFault> settingFaults(const Config &config, const QList<Setting> &settings)
{
    QList<SettingFault> faults;
    for (const Config::Entry &entry : config.entries()) {
        const auto setting = std::find_if(settings.cbegin(), settings.cend(),
                                          [&](const Setting &known) { return known.key == entry.key(); });
        QString expected;
        if (setting == settings.cend())
            faults.append(unknown(entry, settings));
        else if (const auto kind = valueFault(*setting, entry.value, expected))
            faults.append({*kind, entry, expected});
    }
    return faults;
}

} // namespace till
