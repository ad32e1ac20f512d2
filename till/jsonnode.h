// A value of a JSON file together with its place, so that every complaint names the file and the path in it.
#pragma once

#include <core/money.h>

#include <QtCore/QJsonValue>
#include <QtCore/QList>
#include <QtCore/QString>
#include <QtCore/QStringList>

namespace till {

/// Every read throws BasicException ("FILE: /path/in/file: reason") when the value is not what is asked for.
class JsonNode
{
public:
    /// The whole content of `fileName`. A file that cannot be read or is not JSON is reported with the line.
    static JsonNode readFile(const QString &fileName);

    /// "FILE: /path/in/file"
    QString place() const;

    bool isText() const { return m_value.isString(); }

    /// The value must be an object with no other keys than `known`.
    void requireObject(const QStringList &known) const;

    /// The keys of an object.
    QStringList keys() const;
    bool has(const QString &key) const;

    /// A member of an object; it must be there.
    JsonNode at(const QString &key) const;

    /// The elements of an array.
    QList<JsonNode> items() const;

    /// A text of at least one character.
    QString text() const;

    /// A text that may be empty.
    QString anyText() const;

    /// One of `known`.
    QString choice(const QStringList &known) const;

    bool flag() const;

    /// A whole number from `lowest` to `highest`.
    int wholeNumber(int lowest, int highest) const;

    /// An amount of money from zero: a text like "45.50" or a number; never a fraction of a kopeck.
    Money amount() const;

    /// A number of pieces or kilograms above zero, to a thousandth.
    double quantity() const;

    [[noreturn]] void fail(const QString &reason) const;

private:
    JsonNode(const QString &fileName, const QString &path, const QJsonValue &value);

    QString m_fileName;
    QString m_path;
    QJsonValue m_value;
};

} // namespace till
