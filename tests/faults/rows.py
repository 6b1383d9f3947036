"""The faults: of which command, which calls on which files, and what goes wrong there."""

import errno
import signal
from dataclasses import dataclass

WRITES = "write,writev,pwrite64"
KEEPS = WRITES + ",fsync,fdatasync,ftruncate,unlink,openat"


@dataclass
class Row:
    command: str
    calls: str
    path: str = ""
    deed: str = "fail"
    lasts: bool = False
    act: str = ""  # what is done to the folder of the store while the program is stopped there

    @property
    def is_memory(self):
        return self.calls in ("malloc", "lua")

    @property
    def is_signal(self):
        return self.deed.startswith("signal")

    @property
    def name(self):
        return f"{self.command}: {self.act or self.deed}{' for good' if self.lasts else ''} at {self.calls} {self.path}".strip()


# A disk that fails once, one that is full, a call that does half.
ERRORS = (f"error {errno.EIO}", f"error {errno.ENOSPC}", "short", "full")
COMMANDS = ("run", "deaf", "envelope", "report", "import", "check", "generate", "new")
ROWS = [Row(command, "malloc", lasts=lasts) for command in COMMANDS for lasts in (False, True)]
ROWS += [Row(command, "lua", lasts=lasts) for command in ("run", "check") for lasts in (False, True)]
ROWS += [Row("run", WRITES, path, deed) for path in ("run.jsonl", "run.json", "run.html", "trades.csv", "equity.csv", "out.txt") for deed in ERRORS]
ROWS += [Row("run", KEEPS, "/store/", deed) for deed in (*ERRORS, f"signal {signal.SIGKILL}")]
ROWS += [Row("run", KEEPS, "/store/", f"error {error}", True) for error in (errno.EROFS, errno.EIO)]
# From where the first server has the database to its last save.
ROWS += [Row("run", WRITES + ",fsync,fdatasync", "/store/", f"signal {signal.SIGSTOP}", act=act)
         for act in ("removed", "moved", "replaced", "shared")]
ROWS += [Row("run", "read,pread64", path, f"error {errno.EIO}") for path in ("/store/", "day.csv.gz", "trade.lua")]
ROWS += [Row("import", WRITES + ",renameat,rename,openat,mkdir,unlinkat", "set/", deed) for deed in (*ERRORS, f"signal {signal.SIGKILL}")]
ROWS += [Row("import", "read", "trades_of_b.csv", f"error {errno.EIO}")]
ROWS += [Row("report", WRITES, path, deed) for path in ("again.json", "again.html") for deed in ERRORS]
ROWS += [Row("report", "read", "whole.jsonl", f"error {errno.EIO}")]
ROWS += [Row("new", WRITES + ",openat,mkdir", "mine/", deed) for deed in (*ERRORS, f"signal {signal.SIGKILL}")]
ROWS += [Row("generate", WRITES, path, deed) for path in ("made.csv",) for deed in ERRORS]
ROWS += [Row(command, WRITES, "out.txt", deed) for command in ("check", "import") for deed in ERRORS]
ROWS += [Row("run", "write,writev,pwrite64,read,openat", "", f"signal {number}") for number in (signal.SIGINT, signal.SIGTERM)]
ROWS += [Row("run", "malloc", "", f"signal {signal.SIGTERM}")]
