#!/usr/bin/env python3
"""A recovery puts a copy in the project's place only once the copy is on the disk.

  recover_order.py TOOL REFERENCE_APPLY INTERPOSER

Kills an update between two volumes when it begins to remove the old project, and reads the file
operations of the recovery: what was copied has to be waited for before it is renamed. Ends with 77 where
there is only one volume.
"""
import pathlib
import sys

import volumes
from recover import Recovered, RecoveryBench
from run import FAULTS

MOVE = {"write", "pwrite64", "sendfile", "sendfile64", "copy_file_range"}
PROJECT_FOLDER = "/产线三"


class OrderBench(RecoveryBench):
    """A bench on which the recovery's operations are written down."""

    def recover(self, point, data, project):
        trace = self.near / "recovery"
        done = self.call(data, project, "--apply", LD_PRELOAD=str(self.interposer), FAULT_START="1",
                         FAULT_TRACE=str(trace))
        return Recovered(done.returncode, trace.read_text(errors="replace").splitlines(), 0)


def main():
    tool, program, interposer = (pathlib.Path(path).resolve() for path in sys.argv[1:])
    with volumes.two() as (near, far):
        if volumes.layouts(near, far) == ["one"]:
            return 77
        bench = OrderBench(tool, 0, 0, program, interposer, near, far)
        bench.measure("two")
        bench.recovering = True
        removal = next(number for number, name in enumerate(bench.operations["two"], 1)
                       if name.startswith("unlink ") and "/project" in name)
        status, operations, _ = bench.run("two", removal + 50, FAULTS["KILL"])
        names = [operation.split(" ", 1)[0] for operation in operations]
        renamed = next(i for i, operation in enumerate(operations)
                       if operation.startswith("rename") and operation.endswith(PROJECT_FOLDER))
        moved = max(i for i, name in enumerate(names[:renamed]) if name in MOVE)
        waited = "syncfs" in names[moved:renamed]
        print(f"status {status}; {sum(name in MOVE for name in names[:renamed])} pieces moved, then "
              f"{'waited for' if waited else 'NOT WAITED FOR'}, then {operations[renamed]}")
        return 0 if status == 0 and waited else 1


if __name__ == "__main__":
    sys.exit(main())
