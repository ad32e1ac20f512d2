// Runs checks and reports what they have found.
#include "doctor.h"

#include <core/basicexception.h>
#include <core/plaintext.h>

#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>
#include <QtCore/QSet>

#include <algorithm>

using namespace Qt::Literals::StringLiterals;

namespace till::doctor {

namespace {

constexpr qsizetype longestText = 4000;

QString nameOf(Verdict verdict)
{
    switch (verdict) {
    case Verdict::Ok:
        return u"ok"_s;
    case Verdict::Warning:
        return u"warning"_s;
    case Verdict::Failure:
        return u"failure"_s;
    case Verdict::Skipped:
        break;
    }
    return u"skipped"_s;
}

Finding run(const Check &check)
{
    try {
        return check.run();
    } catch (const BasicException &error) {
        return {Verdict::Failure, u"the check could not be carried out"_s, u"The till's own message says why"_s,
                error.text().ru()};
    }
}

/// What was found names files, services and what they say.
void makePlain(Finding &finding)
{
    finding.found = plainText(finding.found, longestText);
    QStringList lines = finding.quote.split(u'\n');
    for (QString &line : lines)
        line = plainText(line, longestText);
    finding.quote = lines.join(u'\n');
}

} // namespace

QList<Finding> examine(const QList<Check> &checks)
{
    QList<Finding> findings;
    QSet<QString> unusable;
    for (const Check &check : checks) {
        Finding finding =
            unusable.contains(check.needs) ? Finding{Verdict::Skipped, u"needs \"%1\""_s.arg(check.needs)} : run(check);
        finding.check = check.name;
        makePlain(finding);
        if (finding.verdict == Verdict::Failure || finding.verdict == Verdict::Skipped)
            unusable.insert(check.name);
        findings.append(finding);
    }
    return findings;
}

QString reportText(const QList<Finding> &findings)
{
    QString report;
    for (const Finding &finding : findings) {
        report += u"%1 %2: %3"_s.arg(nameOf(finding.verdict).leftJustified(8), finding.check, finding.found);
        if (!finding.remedy.isEmpty())
            report += u". "_s + finding.remedy;
        report += u'\n';
        if (!finding.quote.isEmpty())
            report += u"         "_s + QString(finding.quote).replace(u'\n', u"\n         "_s) + u'\n';
    }
    return report;
}

QString reportJson(const QList<Finding> &findings)
{
    QJsonArray list;
    for (const Finding &finding : findings) {
        QJsonObject object{{u"check"_s, finding.check},
                           {u"verdict"_s, nameOf(finding.verdict)},
                           {u"found"_s, finding.found},
                           {u"remedy"_s, finding.remedy}};
        if (!finding.quote.isEmpty())
            object.insert(u"message"_s, finding.quote);
        list.append(object);
    }
    return QString::fromUtf8(
        QJsonDocument(QJsonObject{{u"status"_s, exitStatus(findings)}, {u"checks"_s, list}}).toJson());
}

int exitStatus(const QList<Finding> &findings)
{
    const auto any = [&findings](Verdict verdict) {
        return std::any_of(findings.cbegin(), findings.cend(),
                           [verdict](const Finding &finding) { return finding.verdict == verdict; });
    };
    return any(Verdict::Failure) ? 2 : any(Verdict::Warning) ? 1 : 0;
}

} // namespace till::doctor
