"""The contestants: Kestrine and its peers, and the command for the same work in each one's best mode.

A contestant returns the arguments of a command; the files are appended. With several files, tools that process one file
at a time run as one process per core, each with an equal share of the files.
"""
import os
import shutil
import subprocess
import sys
from dataclasses import dataclass
from pathlib import Path

HERE = Path(__file__).resolve().parent
SUFFIXES = {"jpeg": "jpg", "png": "png", "tiff": "tif", "gif": "gif"}
CORES = len(os.sched_getaffinity(0))
SHARP_IN_FLIGHT = 4


@dataclass(frozen=True)
class Job:
    """The work in a run folder: inputs in "in", the box to fit the picture into, the JPEG quality."""
    folder: Path
    files: tuple
    width: int
    height: int
    to: str
    quality: int
    preset: str
    many: bool

    @property
    def out(self):
        return self.folder / "out"

    @property
    def suffix(self):
        return SUFFIXES[self.to]


def output_of(command):
    """The output of a command; empty when the program is missing or fails."""
    try:
        done = subprocess.run(command, capture_output=True, text=True, timeout=60)
    except OSError:
        return ""
    return done.stdout.strip() if done.returncode == 0 else ""


def setting_of(build, name):
    """The value of a setting in a build folder's configuration; empty if it is not set."""
    cache = build / "CMakeCache.txt"
    for line in cache.read_text().splitlines() if cache.exists() else ():
        if line.startswith(name + ":"):
            return line.partition("=")[2]
    return ""


class Contestant:
    """`ours` is not a peer; `light` races only in tasks that request it; `formats` are those it can write."""
    ours = False
    light = False
    formats = ("jpeg", "png", "tiff", "gif")
    packages = ()
    modules = ()

    def environment(self, job):
        return {}

    def outputs(self, job):
        return sorted(job.out.iterdir())

    def argv(self, job):
        """The complete command line. It runs in the folder of the inputs."""
        if job.many and self.one_at_a_time:
            return self._shared_out(job)
        return [*self.command(job), *job.files]

    def run(self, spawner, job, environment):
        argv = self.argv(job)
        argv[0] = shutil.which(argv[0])
        return spawner.run(argv, {**environment, **self.environment(job)}, job.folder / "in")

    def _shared_out(self, job):
        """Reads the files from a list in the run folder. The share is rounded up, so each process gets only one."""
        names = job.folder / "files"
        names.write_text("".join(f"{name}\n" for name in job.files))
        share = -(-len(job.files) // CORES)
        return ["xargs", "-d", "\\n", "-a", names, "-P", CORES, "-n", share, *self.command(job)]


class Kestrine(Contestant):
    ours = True
    one_at_a_time = False

    about = "`kestrine -set`, high quality; several files: `kestrinectl convert`, all cores"

    def __init__(self, build, name="kestrine"):
        self.build, self.name = Path(build).resolve(), name
        self.quiet_tool, self.companion = self.build / "bin/kestrine", self.build / "bin/kestrinectl"
        self.own_decoder = setting_of(self.build, "KESTRINE_OWN_JPEG_DECODER") == "ON"

    def version(self):
        kind = setting_of(self.build, "CMAKE_BUILD_TYPE") or "unknown build type"
        return f"{kind}, JPEG by {'its own decoder' if self.own_decoder else 'libjpeg-turbo'}"

    def command(self, job):
        return self.command_for_many(job) if job.many else self.command_of_the_quiet_tool(job)

    def command_for_many(self, job):
        return [self.companion, "convert", "--set", job.preset]

    def command_of_the_quiet_tool(self, job):
        return [self.quiet_tool, "-set", job.preset]

    def outputs(self, job):
        return sorted((job.folder / "in" / job.preset).iterdir())

    def environment(self, job):
        return {"PWD": str(job.folder / "in")}


class Vips(Contestant):
    one_at_a_time = True
    packages = ("libvips-tools",)

    def __init__(self, linear=False):
        self.light = linear
        self.name = "vipsthumbnail --linear" if linear else "vipsthumbnail"
        self.about = ("scales in linear light; shifts colours by a few levels when there is a profile" if linear
                      else "shrinks while decoding, scales in the stored encoding")

    def version(self):
        return output_of(["vipsthumbnail", "--vips-version"])

    def command(self, job):
        options = {"jpeg": f"[Q={job.quality}]", "tiff": "[compression=none]"}.get(job.to, "")
        return ["vipsthumbnail", *(["--linear"] if self.light else []), "--size", f"{job.width}x{job.height}",
                "-o", f"{job.out}/%s.{job.suffix}{options}"]

    def environment(self, job):
        return {"VIPS_CONCURRENCY": "1"} if job.many else {}


def magick_options(job):
    """The output options of both Magick tools."""
    return {"jpeg": ["-quality", job.quality], "tiff": ["-compress", "None"]}.get(job.to, [])


class ImageMagick(Contestant):
    name = "ImageMagick"
    one_at_a_time = True
    packages = ("imagemagick",)
    about = "`mogrify -path`, JPEG decoded at twice the size or more (`jpeg:size`), Lanczos; memory limits raised"

    def __init__(self, settings):
        """Sets other limits in the folder `settings`: with Debian's limits, 100 megapixels would be swapped to files."""
        self.settings = settings
        names = {"memory": "16GiB", "map": "32GiB", "area": "1GP", "disk": "64GiB"}
        lines = [f'<policy domain="resource" name="{name}" value="{value}"/>' for name, value in names.items()]
        settings.mkdir(parents=True, exist_ok=True)
        (settings / "policy.xml").write_text("<policymap>" + "".join(lines) + "</policymap>")
        # Debian's name first, since other programs are also named mogrify.
        self.program = next(filter(shutil.which, ("mogrify-im6.q16", "mogrify")), "")

    def version(self):
        said = output_of([self.program, "-version"])
        return " ".join(said.split("\n")[0].split()[1:4]) if "ImageMagick" in said else ""

    def command(self, job):
        hint = f"jpeg:size={2 * job.width}x{2 * job.height}"
        return [self.program, "-path", job.out, "-format", job.suffix, "-define", hint, "-filter", "Lanczos",
                "-resize", f"{job.width}x{job.height}", *magick_options(job)]

    def environment(self, job):
        return {"MAGICK_CONFIGURE_PATH": str(self.settings), **({"MAGICK_THREAD_LIMIT": "1"} if job.many else {})}


class GraphicsMagick(Contestant):
    name = "GraphicsMagick"
    one_at_a_time = True
    packages = ("graphicsmagick",)
    about = "`gm mogrify`, JPEG decoded at twice the size or more (`-size`), Lanczos"

    def version(self):
        return " ".join(output_of(["gm", "version"]).split("\n")[0].split()[:2])

    def command(self, job):
        hint = f"{2 * job.width}x{2 * job.height}"
        return ["gm", "mogrify", "-output-directory", job.out, "-format", job.suffix, "-size", hint,
                "-filter", "Lanczos", "-resize", f"{job.width}x{job.height}", *magick_options(job)]

    def environment(self, job):
        return {"OMP_NUM_THREADS": "1"} if job.many else {}


class Pillow(Contestant):
    name = "Pillow"
    one_at_a_time = True
    packages = ("python3-pil",)
    about = "`thumbnail` with draft decoding and `reducing_gap=2`, Lanczos"

    def version(self):
        return output_of([sys.executable, "-c", "import PIL; print('Pillow', PIL.__version__)"])

    def command(self, job):
        return [sys.executable, HERE / "pillow_peer.py", job.width, job.height, job.to, job.quality, job.out]


class NodePeer(Contestant):
    one_at_a_time = False
    packages = ("nodejs", "npm")

    def __init__(self, folder):
        self.folder = Path(folder)

    def version(self):
        """Also empty when the module is installed but cannot be loaded by this version of node."""
        where = (self.folder / "node_modules" / self.module).resolve()
        package = f"JSON.parse(require('fs').readFileSync('{where}/package.json'))"
        version = output_of(["node", "-e", f"require('{where}'); console.log({package}.version)"])
        return f"{self.module} {version}, node {output_of(['node', '--version'])}" if version else ""

    def command(self, job):
        return ["node", HERE / "node_peer.mjs", self.library, self.folder, job.width, job.height, job.to, job.quality,
                job.out, SHARP_IN_FLIGHT if job.many else 1]


class Sharp(NodePeer):
    name = "sharp"
    library = module = "sharp"
    modules = ("sharp",)
    about = f"metadata kept; several files: one process, {SHARP_IN_FLIGHT} in flight"


class Napi(NodePeer):
    name = "@napi-rs/image"
    library, module = "napi", "@napi-rs/image"
    modules = ("@napi-rs/image",)
    formats = ("jpeg", "png", "tiff")
    about = f"`fastResize`, Lanczos; cannot keep metadata; several files: one process, {SHARP_IN_FLIGHT} in flight"


def all_peers(work, npm):
    return [Vips(), Vips(linear=True), Sharp(npm), ImageMagick(work / "imagemagick"), GraphicsMagick(), Pillow(),
            Napi(npm)]
