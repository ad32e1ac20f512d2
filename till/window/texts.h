// How numbers are written in the window, and the window's other language.
#pragma once

#include <core/money.h>

#include <QtCore/QHash>
#include <QtCore/QTranslator>

namespace till {

/// With two decimals and groups of thousands, as QLocale's default writes them.
QString moneyText(Money sum);
/// Without decimals that are not needed.
QString quantityText(double quantity);

/// Translates the window's Russian texts into English.
class EnglishTranslator : public QTranslator
{
public:
    EnglishTranslator();

    QString translate(const char *context, const char *source, const char *disambiguation, int n) const override;
    bool isEmpty() const override { return m_texts.isEmpty(); }

private:
    QHash<QString, QString> m_texts;
};

} // namespace till
