# Random sales, as scenarios for the till. A step that does not fit the check fails with a message, and the next one
# follows.
import random


def customer(number, balance, tier):
    return {"CustAccount": f"C-{number}", "LastName": "Покупатель", "FirstName": str(number),
            "Phone": f"+7900100000{number}", "Cards": [f"777000000000{number}"], "Balance": balance,
            "Tiers": [{"Name": "Tier", "Discount": tier}]}


# In the form that the service's stand-in reads. Some have points for all sales, some run out of them.
CUSTOMERS = [customer(1, "1000000.00", 5), customer(2, "250000.00", 3), customer(3, "4321.09", 7),
             customer(4, "0.00", 10)]


class Sales:
    # The same seed makes the same sales.
    def __init__(self, seed):
        self.random = random.Random(seed)
        self.number = self.random.randint

    def chance(self, percent):
        return self.number(1, 100) <= percent

    def goods(self):
        kopecks = self.number(1, 50_000 if self.chance(80) else 500_000)
        item = {"barcode": str(self.number(1, 99_999)), "name": "Товар", "price": f"{kopecks / 100:.2f}",
                "quantity": self.number(1, 4) if self.chance(70) else self.number(1, 3000) / 1000}
        if self.chance(15):
            item["labels"] = [self.random.choice(("NOSPEND", "NOBONUS"))]
        for key, value, percent in (("onSale", True, 10), ("allowDiscount", False, 5), ("allowBonusEarn", False, 5)):
            if self.chance(percent):
                item[key] = value
        return item

    # The same card several times: where the service failed to find it, the cashier tries again.
    def card_steps(self):
        holder = self.random.choice(CUSTOMERS)
        return 3 * [{"phone": holder["Phone"]} if self.chance(40) else {"card": holder["Cards"][0]}]

    def change_or_price(self):
        change = {"change": {"line": self.number(1, 4), "quantity": self.number(1, 5)}}
        return self.random.choice(("restore", "subtotal", "price", "spend", "nocard", change, change,
                                   {"add": self.goods()}, {"remove": self.number(2, 4)}))

    def spend_and_end(self, percent):
        return (["spend"] if self.chance(percent) else []) + ["close" if self.chance(85) else "void"]

    # As many as there are failures; where one is left unanswered the till ends.
    def answers(self):
        answers = {"dialogs": ["retry" if self.chance(95) else "remove" for _ in range(30)]}
        if self.chance(5):
            answers["codes"] = [self.random.choice(("give-up", "wrong"))]
        return answers

    def new_check(self):
        goods = [self.goods() for _ in range(self.number(1, 4))]
        steps = self.card_steps() if self.chance(92) else []
        if self.chance(85):
            steps.append("price")
        steps += [self.change_or_price() for _ in range(self.number(0, 3))]
        return {"goods": goods, "steps": steps + self.spend_and_end(60), "answers": self.answers()}

    # Ends the check that an earlier, killed shift may have left open.
    def continuation(self):
        steps = [{"add": self.goods()}]  # A check without goods could not be closed.
        if self.chance(50):
            steps += self.card_steps()
        if self.chance(30):
            steps.append(self.change_or_price())
        return {"continue": True, "steps": steps + self.spend_and_end(40), "answers": self.answers()}

    def shift(self):
        return {"checks": [self.continuation(), *(self.new_check() for _ in range(self.number(1, 5)))]}
