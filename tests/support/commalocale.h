// A locale with decimal commas for the time of a test: for Qt, for C++ streams, and for C where the system has one.
#pragma once

#include <QtCore/QLocale>

#include <clocale>
#include <locale>

class CommaLocale
{
public:
    CommaLocale() : m_previous(std::locale::global(std::locale(std::locale::classic(), new CommaPunctuation)))
    {
        QLocale::setDefault(QLocale(QLocale::Russian));
        std::setlocale(LC_NUMERIC, "ru_RU.UTF-8");
    }
    ~CommaLocale()
    {
        std::locale::global(m_previous);
        QLocale::setDefault(QLocale::c());
        std::setlocale(LC_ALL, "C.UTF-8");
    }
    Q_DISABLE_COPY_MOVE(CommaLocale)

private:
    struct CommaPunctuation : std::numpunct<char>
    {
        char do_decimal_point() const override { return ','; }
    };
    std::locale m_previous;
};
