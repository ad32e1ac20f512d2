#!/usr/bin/env -S python3 -B
# Sells at random with the real till, another host, the plugin and the service's stand-in, kills them, spoils their
# exchanges, ends in order, and then compares the books of both sides. Its programs are looked up beside it. The number
# of sales paces the kills: that spreads them evenly, and the sales get on however slow the machine is.
import argparse
import json
import random
import shutil
import sys
import tempfile
import time
import traceback
from collections import Counter
from pathlib import Path

from sales import Sales
from shop import Shop

LONGEST_SHIFT = 180  # seconds; a till that takes longer is stuck
LONGEST_PAUSE_BEFORE_KILL = 0.7
LONGEST_PAUSE_BEFORE_KILL_OF_DRAIN = 0.08  # it may have little to do
LONGEST_DOWN_TIME = 0.3
LAST_ATTEMPTS = 5


def report(name, figures):
    print(f"{name:<44} {figures.total() if isinstance(figures, Counter) else figures:7}")
    if isinstance(figures, Counter):
        for part in sorted(figures):
            print(f"  {part:<42} {figures[part]:7}")


# What is wrong with checks and orders; the stand-in's `compare` and `check` judge each line and the balances.
def judge(journal, orders):
    closed = [check for check in journal if check["outcome"] == "closed"]
    with_card = [check for check in closed if check.get("card")]
    bound = Counter(order["orderId"] for order in orders if order["state"] == "bound")
    report("sales closed", len(closed))
    report("  of these with a card", len(with_card))
    report("sales voided", len(journal) - len(closed))
    report("lost", sum(bound[check["check"]] == 0 for check in with_card))
    report("doubled", sum(max(bound[check["check"]] - 1, 0) for check in with_card))
    return [f"check {check['check']} has a card and {bound[check['check']]} bound orders"
            for check in with_card if bound[check["check"]] != 1] + \
           [f"order {order['basket']} is left {order['state']}"
            for order in orders if order["state"] not in ("calculated", "bound", "cancelled")]


class Proof:
    def __init__(self, shop, options):
        self.shop, self.options = shop, options
        self.sales = Sales(options.seed)
        self.random = random.Random(~options.seed)
        self.sold = 0  # When the current worker was started.
        self.sent_again = 0  # Requests that were set aside after a refusal.
        self.findings = []
        self.schedule_kill(LONGEST_PAUSE_BEFORE_KILL)

    # Prints what was counted, and returns what went wrong.
    def run(self):
        self.sell()
        self.finish()
        self.judge()
        return self.findings + self.shop.crashes

    def schedule_kill(self, longest_pause):
        self.next_kill = time.monotonic() + self.random.uniform(0, longest_pause)

    def killed(self):
        return self.shop.kills.total()

    def sell(self):
        reported = 0
        while self.sold < self.options.sales or self.killed() < self.options.kills:
            self.start_work()
            if not self.watch_work():
                return
            self.sold = len(self.shop.journal()[1])
            if 10 * self.sold // self.options.sales > reported:
                reported = 10 * self.sold // self.options.sales
                print(f"{self.sold} sales, {self.killed()} kills", file=sys.stderr)

    def start_work(self):
        chosen = self.random.randint(1, 3) if self.sold > 1 else 3
        if chosen == 1:
            self.shop.drain(self.random.randint(1, 3))
            self.schedule_kill(LONGEST_PAUSE_BEFORE_KILL_OF_DRAIN)
        elif chosen == 2:
            self.shop.sell_elsewhere(self.random.randint(1, 5))
        else:
            self.shop.sell(self.sales.shift())
        if self.sold > 1 and self.random.randint(1, 3) == 1:
            self.send_refused_again()

    # False if something is wrong with the till and going on is pointless.
    def watch_work(self):
        deadline = time.monotonic() + LONGEST_SHIFT
        while self.shop.processes[self.shop.worker].poll() is None:
            if time.monotonic() > deadline:
                self.findings.append("the till does not finish")
                return False
            self.shop.tend()
            self.kill_when_due()
            time.sleep(0.002)
        self.shop.note_end(self.shop.worker, good=[0, 1])
        return not self.shop.crashes

    def kill_when_due(self):
        if (self.killed() >= self.options.kills or time.monotonic() < self.next_kill
                or self.killed() * self.options.sales > self.sold * self.options.kills):
            return
        names = self.shop.running()
        self.schedule_kill(LONGEST_PAUSE_BEFORE_KILL)
        if names:
            # Most depends on the worker, which is the last one.
            name = self.random.choice(names) if self.random.randint(1, 2) == 1 else names[-1]
            self.shop.kill(name, self.random.choice((0, 0, self.random.uniform(0, LONGEST_DOWN_TIME))))

    # Does what a person would on finding refused requests; the proxy forges refusals.
    def send_refused_again(self):
        self.sent_again += self.shop.ask_queue("retry", "--all")["changed"]

    def finish(self):
        self.shop.end_faults()
        self.options.kills = 0
        self.shop.sell_elsewhere(0)
        if not self.watch_work():
            return
        self.shop.sell({"checks": [self.sales.continuation()]})
        self.deliver_all()
        self.findings += [f"{entry['operation']} of order {entry['order']} is left in the queue: {entry['lastError']}"
                          for entry in self.undelivered()]
        if self.shop.select("SELECT identifier FROM sale WHERE standing = 0"):
            self.findings.append("a check is left open")

    def deliver_all(self):
        for _ in range(LAST_ATTEMPTS):
            if not self.watch_work() or not self.undelivered():
                return
            self.send_refused_again()
            self.shop.drain(60)
        self.watch_work()

    def undelivered(self):
        return self.shop.ask_queue("list")["entries"]

    def judge(self):
        file, journal = self.shop.journal()
        for command in (["check"], ["compare", "--journal", file]):
            done = self.shop.inspect(*command)
            if done.returncode:
                self.findings.append(f"loyalty-sim {command[0]}: {done.stdout.decode()}")
        self.judge_traffic()
        orders = json.loads(self.shop.inspect("ledger", "--json").stdout)["orders"]
        self.findings += judge([json.loads(line) for line in journal], orders)

    def judge_traffic(self):
        record = self.shop.record()
        orders = [one for one in record if one.get("basket")]
        refused = sum(not one.get("accepted") for one in orders)
        # Pricing books nothing.
        booked = Counter((one["method"], one["basket"], one.get("body"))
                         for one in orders if one.get("accepted") and one["method"] != "calculateOrder")
        report("processes killed", self.shop.kills)
        report("exchanges that met with a fault", Counter(one["fault"] for one in record if one.get("fault")))
        report("refused requests sent again", self.sent_again)
        report("requests refused by the service itself", refused)
        report("requests delivered more than once", booked.total() - len(booked))
        # A killed till may leave a request on its way, which then comes too late.
        if refused > self.killed():
            self.findings.append("the service itself has refused more requests than kills can explain")
        if booked.total() == len(booked):
            self.findings.append("nothing was delivered twice, so that nothing is proven about it")


def options():
    parser = argparse.ArgumentParser(
        prog="kvo-prove", description="Random sales under kills and faults. The seed fixes what is sold and drawn; when "
        "a process is killed depends on the machine as well. Exit status: 0 nothing was lost or doubled, 1 something "
        "does not hold, 2 the proof could not be carried out. The queue is on the PostgreSQL server that KVO_POSTGRES "
        "names, see scripts/with-postgres, otherwise in a file.", formatter_class=argparse.ArgumentDefaultsHelpFormatter)
    parser.add_argument("--sales", type=int, default=300, help="checks to finish, at least")
    parser.add_argument("--kills", type=int, default=200, help="processes to kill")
    parser.add_argument("--seed", type=int, default=argparse.SUPPRESS,
                        help="start of the random numbers; by default another one each time")
    chosen = parser.parse_args(namespace=argparse.Namespace(seed=random.SystemRandom().randrange(2**32)))
    if chosen.sales < 1 or chosen.kills < 0:
        parser.error("--sales must be above 0, --kills must not be below 0")
    return chosen


def main(chosen):
    folder = Path(tempfile.mkdtemp(prefix="kvo-prove-"))
    print("seed", chosen.seed, flush=True)
    shop = Shop(folder, Path(sys.argv[0]).absolute().parent, chosen.seed)
    try:
        findings = Proof(shop, chosen).run()
    finally:
        shop.close()
    for finding in findings:
        print("FOUND:", finding)
    print("It does not hold" if findings else "All holds", f", seed {chosen.seed}", sep="")
    if findings:
        print("The files are kept in", folder)
        return 1
    shutil.rmtree(folder)
    return 0


if __name__ == "__main__":
    try:
        sys.exit(main(options()))
    except Exception:
        traceback.print_exc()
        sys.exit(2)
