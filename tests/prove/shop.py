# The shop: the service's stand-in, the fault proxy in front of it, the till, and a till of another make, each a process
# that may be killed.
import json
import os
import signal
import socket
import sqlite3
import subprocess
import time
from collections import Counter
from contextlib import closing

from sales import CUSTOMERS

PATIENCE = 60  # seconds
INI = """[Host]
dataFolder = {folder}/{name}
[Log]
file = {folder}/{name}.log
[Kvo]
host = http://127.0.0.1:{port}
timeout = {timeout}
brand = B
onlineStore = S
terminal = T
verificationLimit = 200
[Queue]
{queue}
"""


# Keeps a port for a process that is killed and started again.
def hold_port():
    held = socket.socket()
    held.setsockopt(socket.SOL_SOCKET, socket.SO_REUSEADDR, 1)
    held.bind(("127.0.0.1", 0))
    return held


class Shop:
    def __init__(self, folder, programs, seed):
        self.folder, self.programs, self.seed = folder, programs, seed
        self.fault_rate = 0.2  # The part of the exchanges that meet with a fault.
        self.held = {name: hold_port() for name in ("service", "proxy")}
        self.processes = {}
        self.due = {}  # When a killed process is to come back.
        self.worker = ""  # "till", "host" or "drain": who was started last.
        self.kills = Counter()  # The other host also kills itself.
        self.crashes = []  # Processes that ended neither by a kill nor in order.
        self.started = 0  # Workers and proxies: each has random numbers of its own.
        self.postgres = os.environ.get("KVO_POSTGRES")  # The socket's folder; without it a file is the queue.
        if self.postgres:
            subprocess.run(["createdb", "-h", self.postgres, "-U", "postgres", folder.name], check=True)
        (folder / "customers.json").write_text(json.dumps(CUSTOMERS))
        self.configure_tills(timeout=500)
        self.start_part("service")
        self.start_part("proxy")

    # Both tills use one queue. `timeout`: of an exchange, in milliseconds.
    def configure_tills(self, timeout):
        queue = f"database = {self.folder}/queue.db"
        if self.postgres:
            queue = f"driver = QPSQL\nhost = {self.postgres}\nuser = postgres\ndatabase = {self.folder.name}"
        for name in ("till", "host"):
            text = INI.format(folder=self.folder, name=name, port=self.port("proxy"), timeout=timeout, queue=queue)
            (self.folder / f"{name}.ini").write_text(text)

    def port(self, name):
        return self.held[name].getsockname()[1]

    def start(self, name, program, *arguments):
        self.started += 1
        if name not in self.held:
            self.worker = name
        with open(self.folder / f"{name}.out", "ab") as output:
            self.processes[name] = subprocess.Popen(
                ["setpriv", "--pdeathsig", "KILL", self.programs / program, *map(str, arguments)],  # ends with us
                stdin=subprocess.DEVNULL, stdout=output, stderr=subprocess.STDOUT)

    def start_part(self, name):
        if name == "service":
            self.start(name, "loyalty-sim", "serve", "--database", self.folder / "service.db", "--customers",
                       self.folder / "customers.json", "--port", self.port(name))
        else:
            self.start(name, "fault-proxy", "--port", self.port(name), "--service", self.port("service"), "--seed",
                       self.seed + self.started, "--rate", self.fault_rate, "--record", self.folder / "record.jsonl")

    # Each of these three starts a worker; the one before must have ended.

    # Has the till work through a scenario.
    def sell(self, scenario):
        file = self.folder / f"shift{self.started}.json"
        file.write_text(json.dumps(scenario))
        code = f'"{self.programs}/loyalty-sim" outbox --database "{self.folder}/service.db" --last --code'
        self.start("till", "kvo-till", "run", "--config", self.folder / "till.ini", "--code-command", code,
                   "--drain-seconds", 0, file)

    # Has the other host sell so many checks at random, after the one that it has left open.
    def sell_elsewhere(self, checks):
        self.start("host", "random-host", self.folder / "host.ini", self.seed + self.started, checks)

    # Delivers what is queued, for at most so many seconds.
    def drain(self, seconds):
        self.start("drain", "kvo-till", "drain", "--config", self.folder / "till.ini", "--seconds", seconds)

    # What can be killed now; the worker comes last.
    def running(self):
        return [name for name in ("service", "proxy", self.worker) if self.processes[name].poll() is None]

    # The service and the proxy come back after so many seconds, see tend().
    def kill(self, name, down_time=0.0):
        self.processes[name].kill()
        self.processes[name].wait(PATIENCE)
        self.due[name] = time.monotonic() + down_time

    # Starts again what was killed and is due.
    def tend(self):
        for name in ("service", "proxy"):
            if self.processes[name].poll() is not None and time.monotonic() >= self.due.get(name, 0):
                self.note_end(name, good=[])
                self.start_part(name)

    # Records a kill or a crash.
    def note_end(self, name, good):
        status = self.processes[name].wait(PATIENCE)
        if status == -signal.SIGKILL:
            self.kills[name] += 1
        elif status not in good:
            self.crashes.append(f"the {name} has ended with status {status}, see {name}.out")

    # From here on there are no faults, and the tills are patient.
    def end_faults(self):
        self.fault_rate = 0
        self.configure_tills(timeout=1000 * PATIENCE)
        for name in ("service", "proxy"):
            self.kill(name)
            self.start_part(name)
            self.wait_for_listener(name)

    def wait_for_listener(self, name):
        deadline = time.monotonic() + PATIENCE
        while time.monotonic() < deadline:
            try:
                return socket.create_connection(("127.0.0.1", self.port(name)), PATIENCE).close()
            except ConnectionRefusedError:
                time.sleep(0.01)
        raise TimeoutError(f"the {name} cannot be reached any more")

    # What both tills have stored of their checks.
    def select(self, query):
        rows = []
        for file in (self.folder / "host/checks.db", self.folder / "till/checks.db"):
            if file.exists():
                with closing(sqlite3.connect(file)) as store:
                    # A till that was killed before it had made its tables has stored nothing.
                    if store.execute("SELECT 1 FROM sqlite_master WHERE name = 'journal'").fetchone():
                        rows += [row[0] for row in store.execute(query)]
        return rows

    # The finished checks as JSON lines, in a file and as a list.
    def journal(self):
        lines = self.select("SELECT entry FROM journal ORDER BY id")
        file = self.folder / "journal.jsonl"
        file.write_text("".join(line + "\n" for line in lines), encoding="utf-8")
        return file, lines

    # What the proxies have done and seen.
    def record(self):
        return [json.loads(line) for line in (self.folder / "record.jsonl").read_bytes().splitlines()]

    # Runs an inspecting command of the service's stand-in.
    def inspect(self, *arguments):
        return self.ask("loyalty-sim", *arguments, "--database", self.folder / "service.db")

    # The answer of `kvo-till queue`.
    def ask_queue(self, *arguments):
        done = self.ask("kvo-till", "queue", "--json", "--config", self.folder / "till.ini", *arguments)
        done.check_returncode()
        return json.loads(done.stdout)

    def ask(self, program, *arguments):
        return subprocess.run([self.programs / program, *arguments], stdout=subprocess.PIPE, stderr=subprocess.STDOUT,
                              timeout=PATIENCE)

    def close(self):
        for process in self.processes.values():
            process.kill()
            process.wait()
