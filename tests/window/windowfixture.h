// A shop whose till has a window.
#pragma once

#include "iowatch.h"
#include "tests/sale/salefixture.h"
#include "windowdriver.h"

#include <QtCore/QDir>
#include <QtGui/QPixmap>

class WindowTest : public SaleTest
{
protected:
    WindowTest()
    {
        QDir(folder.path()).mkdir(u"data"_s);
        QFile::copy(QStringLiteral(KVO_GOODS), folder.filePath(u"data/goods.json"_s));
    }

    /// Starts the till, with the settings that are given besides the usual ones.
    void start(const QByteArray &settings = {})
    {
        writeFile(ini(), readFile(ini()) + settings);
        iowatch::watch(folder.path().toStdString());
        shop = std::make_unique<WindowDriver>(ini());
        ASSERT_TRUE(shop->ready);
    }

    /// Puts the customer with 1500 points on the check, which the service then prices.
    void addCustomer()
    {
        ASSERT_TRUE(shop->press(Qt::Key_F3));
        ASSERT_TRUE(shop->type(u"+79001234567"_s));
        ASSERT_TRUE(shop->press(Qt::Key_F4));
    }

    /// The code in the customer's last text message.
    QString code() const
    {
        QProcess outbox;
        outbox.start(QStringLiteral(KVO_SIMULATOR),
                     {u"outbox"_s, u"--database"_s, folder.filePath(u"service.db"_s), u"--last"_s, u"--code"_s});
        EXPECT_TRUE(outbox.waitForFinished());
        return QString::fromUtf8(outbox.readAll()).trimmed();
    }

    /// Keeps a picture of the window where the environment names a folder for it.
    void picture(const QString &name)
    {
        QTest::qWait(1); // a last event or two before it is drawn
        const QPixmap shown = shop->window.grab();
        if (const QString out = qEnvironmentVariable("KVO_SCREENSHOTS"); !out.isEmpty()) {
            EXPECT_TRUE(shown.save(QDir(out).filePath(name + u".png"_s)));
        }
    }

    QString ini() const { return folder.filePath(u"till.ini"_s); }

    std::unique_ptr<WindowDriver> shop;
};
