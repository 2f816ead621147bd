"""Encoders and decoders as commands: this tool's and its peers'."""

import os
import shlex
import shutil
import subprocess
import tempfile
import time
from bisect import bisect_left
from concurrent.futures import ThreadPoolExecutor
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent
TOOL = ROOT / "build" / "release" / "orvane-cli"
SUFFIXES = {"png": ".png", "jpeg": ".jpg", "heic": ".heic", "avif": ".avif", "webp": ".webp",
            "jxl": ".jxl"}


def run(command):
    """Runs a command and gives the processor seconds that it took, its children's included."""
    process = subprocess.Popen([str(word) for word in command], stdout=subprocess.DEVNULL,
                               stderr=subprocess.PIPE, text=True)
    complaints = process.stderr.read()
    _, status, usage = os.wait4(process.pid, 0)
    process.returncode = os.waitstatus_to_exitcode(status)
    if process.returncode != 0:
        raise RuntimeError(f"{' '.join(map(str, command))}\n{complaints}")
    return usage.ru_utime + usage.ru_stime


def timed(work):
    """Seconds on the clock, and what a function gives: seconds of the processor."""
    start = time.perf_counter()
    seconds = work()
    return time.perf_counter() - start, seconds


def peak_of(command):
    """Runs a command and gives the KiB of its largest process. GNU time tells them: a process counts
    the memory of the one that started it, and that of GNU time is small."""
    with tempfile.NamedTemporaryFile("r") as report:
        run(["time", "--format=%M", f"--output={report.name}", *command])
        return int(report.read())


def first_of(*names):
    """The first of these commands that is installed, or the first name."""
    return next((name for name in names if shutil.which(name)), names[0])


def decode(encoded, decoded):
    """Writes what an encoded file shows, as PNG or PNM. `decoded` has no suffix; gives the path."""
    png, pnm = decoded.with_suffix(".png"), decoded.with_suffix(".ppm")
    match encoded.suffix:
        case ".jpg":
            run(["djpeg", "-pnm", "-outfile", pnm, encoded])
            return pnm
        case ".webp":
            run(["dwebp", encoded, "-o", png])
        case ".jxl":
            run(["djxl", encoded, png])
        case ".avif":
            run(["avifdec", encoded, png])
        case ".heic":
            run([first_of("heif-dec", "heif-convert"), encoded, png])
        case ".png":
            return encoded
    return png


class Ours:
    """This tool at its own quality, all pictures in one run."""

    def __init__(self, image_format):
        self.name = f"orvane-cli {image_format}"
        self.format, self.suffix = image_format, SUFFIXES[image_format]

    def commands(self, sources, quality, folder, jobs):
        return [[TOOL, *(source.png for source in sources), "--output", folder,
                 "--format", self.format, "--quality", quality, "--jobs", jobs]]


class Peer:
    """Another encoder; `arguments(source, quality, output)` is its command for one picture,
    `qualities` are those that curves are drawn through, `scale` are all, the worst first."""

    def __init__(self, name, suffix, qualities, arguments, scale=range(1, 101)):
        self.name, self.suffix, self.qualities = name, suffix, qualities
        self.arguments, self.scale = arguments, scale

    def commands(self, sources, quality, folder, _jobs):
        return [self.arguments(source, quality, output_of(self, source, folder))
                for source in sources]


def encode(encoder, sources, quality, folder, jobs):
    """Encodes all pictures into a folder, as many at once as there are jobs; gives the processor
    seconds."""
    folder.mkdir(exist_ok=True)
    with ThreadPoolExecutor(jobs) as pool:
        return sum(pool.map(run, encoder.commands(sources, quality, folder, jobs)))


PEERS = {
    "png": [Peer("pngquant", ".png", (10, 30, 50, 70, 85, 95),
                 lambda source, quality, output: [
                     "pngquant", "--force", "--speed", 3, "--quality", f"0-{quality}",
                     "--output", output, source.png])],
    "jpeg": [Peer("cjpeg -optimize -progressive", ".jpg", (50, 65, 75, 83, 89, 93),
                  lambda source, quality, output: [
                      "cjpeg", "-optimize", "-progressive", "-quality", quality,
                      "-outfile", output, source.pnm])],
    "avif": [Peer(f"avifenc --speed 6 --yuv {yuv}", ".avif", (36, 30, 25, 20, 15, 10),
                  lambda source, quality, output, yuv=yuv: [
                      "avifenc", "--speed", 6, "--jobs", 1, "--min", quality, "--max", quality,
                      "--yuv", yuv, source.png, output],
                  range(63, -1, -1)) for yuv in (420, 444)],
    "heic": [Peer("heif-enc", ".heic", (35, 42, 48, 54, 60, 68),
                  lambda source, quality, output: [
                      "heif-enc", "-q", quality, source.png, "-o", output])],
    "webp": [Peer("cwebp", ".webp", (50, 65, 78, 87, 92, 96),
                  lambda source, quality, output: [
                      "cwebp", "-quiet", "-q", quality, source.png, "-o", output])],
    "jxl": [Peer("cjxl", ".jxl", (4.5, 3.3, 2.4, 1.8, 1.3, 0.9),
                 lambda source, quality, output: [
                     "cjxl", "--num_threads=0", "-d", quality, source.png, output],
                 [tenths / 10 for tenths in range(150, 0, -1)])],
}

SHARP_HAS = {"png": "libimagequant", "jpeg": "mozjpeg", "avif": "libaom", "webp": "libwebp"}
SHARP = """
const sharp = require('sharp');
sharp.concurrency(1);
const [source, format, quality, output] = process.argv.slice(1);
const options = format === 'jpeg' ? { quality: +quality, mozjpeg: true } : { quality: +quality };
sharp(source).toFormat(format, options).toFile(output);
"""


def sharp_is_installed():
    return shutil.which("node") and subprocess.run(
        ["node", "-e", "require('sharp')"], capture_output=True).returncode == 0


def peers(image_format):
    """The other encoders of a format that are there to compare with."""
    found = list(PEERS[image_format])
    if image_format in SHARP_HAS and sharp_is_installed():
        found.append(Peer(f"sharp ({SHARP_HAS[image_format]})", SUFFIXES[image_format],
                          (40, 55, 67, 77, 85, 92),
                          lambda source, quality, output: [
                              "node", "-e", SHARP, source.png, image_format, quality, output]))
    return found


def nearest(scale, target, value_of):
    """The setting of a scale, the worst first, whose value is nearest to the target."""
    index = bisect_left(scale, target, key=value_of)
    return min(scale[max(index - 1, 0):index + 1],
               key=lambda setting: abs(value_of(setting) - target))


class Source:
    """One picture as PNG and as PNM: laid on white and without profile, so that every encoder is
    given, and every decoder shows, the same numbers; never with a palette, which heif-enc 1.15 gets
    wrong."""

    def __init__(self, png, work):
        self.name = f"{png.parent.name}-{png.stem}"
        self.png, self.pnm = work / f"{self.name}.png", work / f"{self.name}.ppm"
        filter_to(self.pnm, ["pngtopnm", "-mix", "-background=white", png])
        filter_to(self.png, ["pnmtopng", "-force", "-compression=1", self.pnm])
        with open(self.pnm, "rb") as pnm:
            width, height = pnm.read(64).split()[1:3]
        self.pixels = int(width) * int(height)


def filter_to(path, command):
    with open(path, "wb") as output:
        subprocess.run(command, stdout=output, stderr=subprocess.DEVNULL, check=True)


def sources_of(folders, work, every=1):
    """Every nth PNG of the folders."""
    pictures = [png for folder in folders for png in sorted(folder.glob("*.png"))]
    return [Source(png, work) for png in pictures[::every]]


def output_of(encoder, source, folder):
    return folder / f"{source.name}{encoder.suffix}"


def score(source, decoded, scorer):
    """SSIMULACRA 2 of a decoded picture against its source; 100 is identical."""
    printed = subprocess.run([*scorer, source.png, decoded], capture_output=True, text=True)
    if printed.returncode != 0:
        raise RuntimeError(printed.stderr)
    return float(printed.stdout.split()[0])


def measure(encoder, sources, quality, options):
    """Encodes, decodes and scores all pictures: a list of bits per pixel, one of scores, and the
    processor seconds that encoding took. `options` are jobs and scorer."""
    scorer = shlex.split(options.scorer)
    with tempfile.TemporaryDirectory() as work, ThreadPoolExecutor(options.jobs) as pool:
        folder = Path(work) / "encoded"
        seconds = encode(encoder, sources, quality, folder, options.jobs)

        def examine(source):
            output = output_of(encoder, source, folder)
            bits = output.stat().st_size * 8 / source.pixels
            decoded = decode(output, Path(work) / source.name)
            result = bits, score(source, decoded, scorer)
            if decoded != output:
                decoded.unlink()
            return result

        bits, scores = zip(*pool.map(examine, sources))
    return bits, scores, seconds
