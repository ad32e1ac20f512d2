// The text of a file, written as the values come. Private to this folder.
#pragma once

#include <QtCore/QByteArray>
#include <QtCore/QDateTime>
#include <QtCore/QJsonObject>
#include <QtCore/QVariantMap>

#include <type_traits>

/// One JSON object as compact UTF-8 text. Objects add their entries themselves: to build maps or a QJsonDocument first,
/// only to have them written, took most of the time in which the check thread waits for a save, not counting the disk.
///
/// The functions that are given add the entries of the object that they are given for.
class JsonWriter
{
public:
    /// The text of the object whose entries are those that `addEntries` adds to the JsonWriter that it is given.
    template <class AddEntries>
    static QByteArray of(AddEntries addEntries);

    /// `text` as variants: what is there when it is read again.
    static QVariantMap toMap(const QByteArray &text);

    /// Whether two values read back as the same. It is false also where only their texts could tell.
    template <class Value>
    static bool isSame(const Value &a, const Value &b);

    /// An entry. Numbers read back as the same numbers, enumerations as theirs; those that are no numbers become null.
    /// Other variants go through serder::toPlain(), which throws BasicException where a value cannot be taken apart.
    template <class Name, class Value>
    void add(const Name &name, const Value &value);

    /// An entry that is an object.
    template <class Name, class AddEntries>
    void addObject(const Name &name, AddEntries addEntries);

    /// An entry that is a list with an object for each element: `addEntries(element)`.
    template <class Name, class List, class AddEntries>
    void addList(const Name &name, const List &list, AddEntries addEntries);

private:
    void name(QLatin1StringView name); ///< Of our own, with nothing to escape.
    void name(const QString &name);
    void write(bool value);
    void write(int value) { write(static_cast<qint64>(value)); }
    void write(qint64 value);
    void write(double value);
    void write(const QString &value);
    void write(const QDateTime &value); ///< ISO 8601 with milliseconds; an invalid one is an empty text.
    void write(const QVariant &value);
    void write(const QVariantMap &value);
    void write(const QVariantList &value);
    void write(const QJsonObject &value);
    void write(const char *) = delete;
    template <class Enum>
    requires std::is_enum_v<Enum>
    void write(Enum value);
    template <class AddEntries>
    void writeObject(AddEntries addEntries);
    void writeByLibrary(const QVariant &value);

    /// Between two entries or elements.
    void separate();
    void append(QByteArrayView text);
    void append(char character);
    /// Where the text goes on, with room for `longest` bytes; the caller moves m_size on.
    char *room(qsizetype longest);

    QByteArray m_text;
    qsizetype m_size = 0;
    QDateTime m_lastTime;
    QByteArray m_lastTimeText;
};

template <class AddEntries>
QByteArray JsonWriter::of(AddEntries addEntries)
{
    JsonWriter json;
    json.writeObject([&] { addEntries(json); });
    json.m_text.truncate(json.m_size);
    return json.m_text;
}

template <class Value>
bool JsonWriter::isSame(const Value &a, const Value &b)
{
    // Values that are equal may still be of different types, and times in different zones.
    if constexpr (std::is_same_v<Value, QVariant>)
        return a.metaType() == b.metaType() && a == b;
    else if constexpr (std::is_same_v<Value, QDateTime>)
        return a.timeSpec() == Qt::LocalTime && b.timeSpec() == Qt::LocalTime && a == b;
    else
        return a == b;
}

template <class Name, class Value>
void JsonWriter::add(const Name &name, const Value &value)
{
    this->name(name);
    write(value);
}

template <class Name, class AddEntries>
void JsonWriter::addObject(const Name &name, AddEntries addEntries)
{
    this->name(name);
    writeObject(addEntries);
}

template <class Name, class List, class AddEntries>
void JsonWriter::addList(const Name &name, const List &list, AddEntries addEntries)
{
    this->name(name);
    append('[');
    for (const auto &element : list) {
        separate();
        writeObject([&] { addEntries(element); });
    }
    append(']');
}

template <class Enum>
requires std::is_enum_v<Enum>
void JsonWriter::write(Enum value)
{
    write(static_cast<qint64>(value));
}

template <class AddEntries>
void JsonWriter::writeObject(AddEntries addEntries)
{
    append('{');
    addEntries();
    append('}');
}
