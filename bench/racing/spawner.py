"""Starts programs and reports the cost of each; deliberately small.

The memory of the starting process counts toward the peak of the process it starts, so the starter must be smaller than
any measured program: a separate process with few imports. It reads marshalled requests from standard input and writes
marshalled replies to standard output.
"""
import marshal
import os
import sys
import time


def run(argv, environment, folder, messages):
    """Status, wall seconds, CPU seconds of the process and its descendants, peak KiB of the largest of them."""
    os.chdir(folder)
    writing = os.O_WRONLY | os.O_CREAT | os.O_TRUNC
    redirections = [(os.POSIX_SPAWN_OPEN, 0, "/dev/null", os.O_RDONLY, 0),
                    (os.POSIX_SPAWN_OPEN, 1, "/dev/null", writing, 0),
                    (os.POSIX_SPAWN_OPEN, 2, messages, writing, 0o644)]
    begun = time.perf_counter()
    process = os.posix_spawn(argv[0], argv, environment, file_actions=redirections)
    _, status, usage = os.wait4(process, 0)
    wall = time.perf_counter() - begun
    return os.waitstatus_to_exitcode(status), wall, usage.ru_utime + usage.ru_stime, usage.ru_maxrss


while True:
    try:
        request = marshal.load(sys.stdin.buffer)
    except EOFError:
        break
    marshal.dump(run(*request), sys.stdout.buffer)
    sys.stdout.buffer.flush()
