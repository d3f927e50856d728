"""The table of tasks with their goals."""
from dataclasses import dataclass, replace

from racing.contestants import Job


@dataclass(frozen=True)
class Goal:
    """Upper limits for ratios to the fastest peer, and other limits; None means no limit. `own_*` are the ratios with our
    own baseline JPEG decoder. `decibels` compare with the full-decode reference in linear light, `peak` is in MiB,
    `peak_share` and `bytes` are the ratios of peaks and of file sizes to the fastest peer."""
    wall: float = None
    wall_aim: float = None
    cpu: float = None
    own_wall: float = None
    own_wall_aim: float = None
    decibels: float = None
    peak: float = None
    peak_share: float = None
    bytes: float = None


@dataclass(frozen=True)
class Task:
    key: str
    title: str
    kind: str
    width: int
    height: int
    to: str
    goal: Goal
    longest: int = 0
    percent: int = 0
    count: int = 1
    share_of_rounds: float = 1.0
    linear_peer: bool = False
    judged: bool = True
    different: int = 0
    quality: int = 70

    @property
    def many(self):
        return self.count > 1

    @property
    def box(self):
        """The width and height requested from the peers."""
        if self.percent:
            return self.width * self.percent // 100, self.height * self.percent // 100
        return self.longest, self.longest

    def __post_init__(self):
        object.__setattr__(self, "different", min(self.different or self.count, self.count))

    def preset(self, to):
        return f"{self.key}-{to}"

    def preset_options(self, to):
        """The arguments for `kestrinectl sets add`. In high quality the longer side is one larger than requested."""
        size = ["--percent", self.percent] if self.percent else ["--longest", self.longest - 1]
        exif = ["--exif", "--quality", self.quality] if to == "jpeg" else []
        return [self.preset(to), *size, "--format", to, "--high-quality", "--convert-resolution", *exif]

    def job(self, folder, files, to):
        width, height = self.box
        return Job(folder, tuple(files), width, height, to, self.quality, self.preset(to), len(files) > 1)

    def rounds(self, asked):
        return max(1, round(asked * self.share_of_rounds))

    def shrunk(self, factor):
        """The same task with all sides and counts divided, for a test run."""
        return replace(self, width=self.width // factor, height=self.height // factor, longest=self.longest // factor,
                       count=max(2, self.count // factor) if self.many else 1)


def is_named(key, name):
    """The name T5 selects T5-lzw and T5-plain."""
    return key == name or key.startswith(name + "-")


def names():
    """The names that --tasks accepts."""
    return [task.key for task in TASKS] + ["start", "growth", "files"]


def known(name):
    keys = [*names(), *(task.key for task in [*GROWTH, *FILES])]
    return any(is_named(key, name) for key in keys)


TASKS = [
    Task("T0", "one 1 MP JPEG to 480, process and all", "jpeg", 1224, 816, "jpeg",
         Goal(0.50, 0.40, 0.50, 0.42, 0.32), longest=480),
    Task("T1", "24 MP JPEG to 1200 JPEG, profile and EXIF kept", "jpeg", 6000, 4000, "jpeg",
         Goal(0.55, 0.45, 0.60, 0.32, 0.25, decibels=52, peak=40), longest=1200, linear_peer=True),
    Task("T2", "sixteen 24 MP JPEG to 1200, all cores", "jpeg", 6000, 4000, "jpeg",
         Goal(0.90, 0.80, 0.95, 0.60, 0.50, decibels=52), longest=1200, count=16, share_of_rounds=0.7),
    Task("T2-mixed", "sixteen 24 MP JPEG, two progressive, to 1200", "mixed", 6000, 4000, "jpeg",
         Goal(0.90, 0.80, 0.95, 0.48, peak=60), longest=1200, count=16, share_of_rounds=0.7, judged=False),
    Task("T3", "12 MP JPEG to 50 %", "jpeg", 4000, 3000, "jpeg",
         Goal(0.50, 0.42, 0.55, 0.38, 0.30, decibels=58), percent=50, linear_peer=True),
    Task("T3-phone", "12 MP JPEG of a telephone to 50 %, quality 80", "phone", 4000, 3000, "jpeg",
         Goal(0.50, 0.42, 0.55, 0.38, 0.33, decibels=58), percent=50, quality=80),
    Task("T4", "6 MP RGBA PNG to 1200 PNG", "rgba", 3000, 2000, "png",
         Goal(0.55, 0.40, 0.60, decibels=57, bytes=0.65), longest=1200, linear_peer=True),
    Task("T5-lzw", "24 MP LZW TIFF to 2000 TIFF", "lzw", 6000, 4000, "tiff",
         Goal(0.60, None, 0.85), longest=2000, linear_peer=True),
    Task("T5-plain", "24 MP uncompressed TIFF to 2000 TIFF", "tiff", 6000, 4000, "tiff",
         Goal(0.50, None, 0.50), longest=2000, linear_peer=True),
    Task("T6", "24 MP JPEG to 480 GIF", "jpeg", 6000, 4000, "gif",
         Goal(0.65, 0.50, 0.70, 0.45, 0.35), longest=480),
    Task("T7", "200 JPEG of 0.5 MP to 256", "jpeg", 800, 600, "jpeg",
         Goal(0.50, 0.40, 0.70, 0.38, 0.28), longest=256, count=200),
    Task("T8-jpeg", "100 MP JPEG to 2000 JPEG", "jpeg", 12000, 8336, "jpeg",
         Goal(0.72, None, 0.90, 0.42, 0.33, peak=40), longest=2000, share_of_rounds=0.7),
    Task("T8-png", "100 MP PNG to 2000 PNG", "png", 12000, 8336, "png",
         Goal(0.55, None, 0.65, peak=100), longest=2000, share_of_rounds=0.4),
    Task("T9", "12 MP HEIC to 1200 JPEG", "heic", 4032, 3024, "jpeg",
         Goal(0.70, 0.50, peak_share=0.5), longest=1200),
    Task("T10", "12 MP AVIF to 1200 JPEG", "avif", 4000, 3000, "jpeg",
         Goal(0.70, peak_share=0.5), longest=1200),
    Task("T11", "24 MP tiled JPEG 2000 to 1200 JPEG", "jp2", 6000, 4000, "jpeg",
         Goal(0.65, peak_share=0.5), longest=1200, share_of_rounds=0.7),
    Task("T12", "20 MP progressive JPEG to 1200 JPEG", "progressive", 5472, 3648, "jpeg",
         Goal(0.50, own_wall=0.40, peak_share=0.5), longest=1200),
    Task("T13", "12 MP WebP to 1200 JPEG", "webp", 4000, 3000, "jpeg",
         Goal(0.70, peak_share=0.5), longest=1200),
    Task("T14", "24 MP JPEG XL to 1200 JPEG", "jxl", 6000, 4000, "jpeg",
         Goal(0.60, peak_share=0.5), longest=1200, share_of_rounds=0.7),
    # No judge: a drawing has no pixels to compare with.
    Task("T15", "SVG logo to 2000 PNG", "svg", 400, 300, "png",
         Goal(0.70, peak_share=0.5), longest=2000, judged=False),
]

# Megapixels -> sides.
GROWTH_SIZES = {1: (1224, 816), 6: (3000, 2000), 12: (4248, 2832), 24: (6000, 4000), 50: (8664, 5776),
                100: (12240, 8160)}


@dataclass(frozen=True)
class Growing:
    """A kind of source, the output format and percentage, and the sizes in megapixels."""
    key: str
    title: str
    kind: str
    to: str
    percent: int
    megapixels: tuple = tuple(GROWTH_SIZES)

    def tasks(self):
        return [Task(f"growth-{self.key}-{size}", f"{size} MP {self.title}", self.kind, *GROWTH_SIZES[size], self.to,
                     Goal(), percent=self.percent, share_of_rounds=0.4, judged=False) for size in self.megapixels]


# To 25 %, where most of the work is reading, and to 90 %, where most of it is writing.
LARGE_OUTPUTS = (6, 24, 100)
GROWING = [
    Growing("jpeg", "JPEG to 25 %", "jpeg", "jpeg", 25),
    Growing("png", "PNG to 25 %", "png", "png", 25),
    Growing("lzw", "LZW TIFF to 25 %", "lzw", "tiff", 25),
    Growing("tiff", "uncompressed TIFF to 25 %", "tiff", "tiff", 25),
    Growing("large-jpeg", "JPEG to 90 %", "jpeg", "jpeg", 90, LARGE_OUTPUTS),
    Growing("large-png", "JPEG to 90 % PNG", "jpeg", "png", 90, LARGE_OUTPUTS),
    Growing("large-tiff", "JPEG to 90 % TIFF", "jpeg", "tiff", 90, LARGE_OUTPUTS),
]
GROWTH = [task for growing in GROWING for task in growing.tasks()]

# Large counts use this number of different files, each under several names.
FILES_DIFFERENT = 40
FILES = [Task(f"files-{count}", f"{count} files", "jpeg", 320, 240, "jpeg", Goal(), longest=160, count=count,
              share_of_rounds=0.4, judged=False, different=FILES_DIFFERENT)
         for count in (10, 100, 1000, 10000)]
