// The loop of a sale by hand. A refused step is shown, and the next line is read.
#include "terminalsale.h"

#include "checkview.h"
#include "console.h"
#include "performstep.h"
#include "receiptprinter.h"
#include "typedstep.h"

#include <cashier/cashierui.h>
#include <core/basicexception.h>
#include <core/singleton.h>

using namespace Qt::Literals::StringLiterals;

namespace till {

namespace {

bool beginsACheck(const Step &step)
{
    return step.kind == Step::Kind::Add || step.kind == Step::Kind::Card || step.kind == Step::Kind::Phone;
}

} // namespace

TerminalSale::TerminalSale(CheckSession &session, QueueDrain &drain, const Catalogue &catalogue,
                           const QString &waysToGoOn)
    : m_session(session), m_drain(drain), m_catalogue(catalogue), m_waysToGoOn(waysToGoOn)
{}

void TerminalSale::run()
{
    console::offer(typedWords());
    console::sayOnInterrupt(u"\nПродажа прервана. Открытый чек, если он есть, сохранён.\n"_s + m_waysToGoOn);
    console::printLine(u"Введите штрихкод, название товара или help"_s);
    showCheck();
    while (const std::optional<QString> line = console::readLine(u"касса> "_s)) {
        if (line->isEmpty())
            continue;
        console::remember(*line);
        try {
            perform(*line);
        } catch (const BasicException &error) {
            Singleton<CashierUi>::instance()->show(error.text());
        } catch (const console::InputEnded &) {
            break;
        }
    }
    if (m_session.isOpen())
        console::print(u"\nЧек сохранён.\n"_s + m_waysToGoOn);
}

void TerminalSale::perform(const QString &line)
{
    if (line == "help"_L1) {
        console::print(typedHelp());
        return;
    }
    const Step step = readTypedStep(line, m_catalogue);
    if (!m_session.isOpen() && beginsACheck(step))
        m_session.open();
    if (const std::optional<CheckResult> ended = till::perform(m_session, step))
        printReceipt(*ended, m_drain);
    else
        showCheck();
}

void TerminalSale::showCheck() const
{
    if (m_session.isOpen())
        console::print(checkView(m_session.result()));
    else
        console::print(keptChecksView(m_session.keptChecks()));
}

} // namespace till
