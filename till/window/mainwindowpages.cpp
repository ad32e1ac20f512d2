// The pages over the sale: choices, queued requests, receipts, help.
#include "listpage.h"
#include "mainwindow.h"
#include "questionpanel.h"

#include <QtWidgets/QLabel>
#include <QtWidgets/QLineEdit>
#include <QtWidgets/QStackedWidget>

using namespace Qt::Literals::StringLiterals;

namespace till {

void MainWindow::showListing(const Listing &listing)
{
    using Kind = Command::Kind;
    const auto send = [this](Kind kind) {
        return [this, kind](const QString &id) { m_till.send({.kind = kind, .text = id}); };
    };
    const auto discard = [this](const QString &id) {
        confirm(tr("Снять запрос %1 с отправки? Служба его не получит.").arg(id), tr("Снять"),
                {.kind = Kind::DiscardRequest, .text = id, .reason = tr("Снят кассиром")});
    };
    if (listing.kind == Listing::Kind::Goods)
        m_list->showListing(tr("Выберите товар"), listing, {{tr("Добавить  Enter"), {}, send(Kind::Add)}});
    else if (listing.kind == Listing::Kind::Parked)
        m_list->showListing(tr("Отложенные чеки"), listing, {{tr("Вернуть чек  Enter"), {}, send(Kind::Take)}});
    else if (listing.kind == Listing::Kind::Journal)
        m_list->showListing(tr("Журнал за сегодня"), listing,
                            {{tr("Показать чек  Enter"), {}, send(Kind::ShowReceipt)}});
    else
        m_list->showListing(tr("Запросы к службе лояльности"), listing,
                            {{tr("Отправить снова  F5"), Qt::Key_F5, send(Kind::RetryRequest)},
                             {tr("Снять с отправки  F7"), Qt::Key_F7, discard}});
    showPage();
}

void MainWindow::showReceipt(const QString &receipt)
{
    const auto save = [this](const QString &) {
        m_till.send({.kind = Command::Kind::SaveReceipt, .text = m_list->text()});
    };
    m_list->showText(tr("Чек"), receipt,
                     {{tr("Следующий чек  Enter"), {}, [this](const QString &) { showSale(); }, false},
                      {tr("Копировать  F5"), Qt::Key_F5, [this](const QString &) { m_list->copyText(); }, false},
                      {tr("Сохранить  F6"), Qt::Key_F6, save, false}});
    showPage();
}

void MainWindow::showHelp()
{
    m_list->showText(
        tr("Помощь"),
        tr("Товар: отсканируйте штрихкод или введите его, 3*код – три штуки, 1,25*код – вес, или часть названия.\n"
           "Стрелки вверх и вниз выбирают строку чека, Tab переходит к кнопкам.\n\n"
           "F2  карта покупателя\nF3  телефон покупателя\nF4  рассчитать чек в службе лояльности\n"
           "F5  списать баллы\nF6  изменить количество строки, =45,50 – цену\nF7  удалить строку\n"
           "F8  вернуть последнее изменение строки\n"
           "F9  отложить чек или вернуть отложенный\nF10  аннулировать чек\nF11  журнал за день\nF12  закрыть чек\n"
           "Ctrl+L  запросы, которые ждут отправки\nEsc  назад\n\n"
           "Питание можно выключить в любой момент: чек останется на кассе."),
        {});
    showPage();
}

void MainWindow::showPage()
{
    m_pages->setCurrentWidget(m_list);
    m_actionArea->hide();
    m_sum->hide();
    m_total->hide();
}

void MainWindow::showSale()
{
    if (!m_till.view().fault.isEmpty()) {
        close();
        return;
    }
    m_pages->setCurrentWidget(m_sale);
    m_actionArea->setVisible(!m_questions->isVisible());
    m_sum->show();
    m_total->show();
    setMode(Mode::Goods);
    m_entry->setFocus();
}

} // namespace till
