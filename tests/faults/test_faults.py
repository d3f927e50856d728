"""A sample of the injected faults of scripts/faults: nothing is lost, changed or left behind, and the tools say what
happened."""
import os
import tempfile
import unittest

import campaign
import plans
from tools import is_sanitized, main

RUNS = 500
THREAD_STARTS = plans.numbers("clone", "clone3")


class InjectedFaults(unittest.TestCase):
    def setUp(self):
        if is_sanitized():
            self.skipTest("sanitizers do not work in a traced process")

    def test_nothing_is_lost_changed_or_left_behind(self):
        memory = "/dev/shm" if os.access("/dev/shm", os.W_OK) else tempfile.gettempdir()
        tally, impossible = campaign.run_quick(memory, RUNS, seed=1, processes=os.cpu_count())
        print(tally.line(), *(f"left out, since no mounts are permitted here: {name}" for name in impossible))
        self.assertEqual(tally.bad, 0)
        # Some planned calls do not happen: nobody waits for the last ones of a worker and of its threads.
        self.assertGreater(tally.runs, RUNS * 7 // 10)

    def test_kestrinectl_does_without_threads_that_the_system_does_not_permit(self):
        memory = "/dev/shm" if os.access("/dev/shm", os.W_OK) else tempfile.gettempdir()
        tally = campaign.run_where(memory, lambda job: job[0] == "convert-together" and job[1] == "calls_that_fail"
                                   and job[2][0] == 0 and job[2][2] in THREAD_STARTS and job[2][3] != "kill")
        self.assertEqual(tally.bad, 0)
        self.assertGreater(tally.runs, 0)


if __name__ == "__main__":
    main()
