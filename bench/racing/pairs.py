"""What pairs of runs say: whether the median of their ratios is above a limit."""
from dataclasses import dataclass
from math import comb

CONFIDENCE = 0.99  # high, because the pairs are looked at several times


def interval(ratios):
    """Between which values the median lies with CONFIDENCE, whatever the distribution; None if there are too few."""
    count, below = len(ratios), 0.0
    rank = -1  # of the lower end, from 0: fewer than that many of `count` ratios are below the median, at most by this chance
    while below + comb(count, rank + 1) / 2 ** count <= (1 - CONFIDENCE) / 2:
        rank += 1
        below += comb(count, rank) / 2 ** count
    if rank < 0:
        return None
    ordered = sorted(ratios)
    return ordered[rank], ordered[-1 - rank]


@dataclass(frozen=True)
class Verdict:
    """`low` and `high`: where the median of the ratios lies."""
    low: float
    high: float
    limit: float

    @property
    def is_slower(self):
        return self.low > self.limit

    @property
    def is_decided(self):
        return self.is_slower or self.high <= self.limit

    @property
    def word(self):
        return "SLOWER" if self.is_slower else "ok" if self.is_decided else "undecided"


def verdict(ratios, limit):
    """Undecided as long as there are too few ratios."""
    low, high = interval(ratios) or (0.0, float("inf"))
    return Verdict(low, high, limit)
