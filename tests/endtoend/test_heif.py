"""HEIC and AVIF pictures, compared with what heif-convert and avifdec decode. These programs repeat chroma samples or
interpolate them; our decoder interpolates."""
import struct
import subprocess

import heif_files as heif
import numpy
import pictures
from PIL import Image
from tools import JPEG, PNG, TIFF, ToolTest, exiftool, main

SAME, SUBSAMPLED = 45, 39  # dB


def smooth(width, height, channels=3):
    """A picture without the noise of pictures.photo(), whose chroma no subsampling keeps."""
    y, x = numpy.mgrid[0:height, 0:width] / max(width, height)
    planes = [0.5 + 0.4 * numpy.sin(5.1 * x * (c + 1) + 4.2 * y + c) for c in range(channels)]
    return numpy.round(numpy.dstack(planes) * 255).astype(numpy.uint8)


class HeifTest(ToolTest):
    def put(self, name, content):
        (self.folder / name).write_bytes(content)
        return name

    def converted(self, name, **fields):
        subprocess.run(["rm", "-rf", self.folder / "S"], check=True)
        path = self.only(self.convert({"formatType": PNG, "resizeType": 9, "highQuality": 0, **fields}, name))
        return Image.open(path)

    def reference(self, name, program):
        result = self.home / "reference.png"
        command = {"heif-convert": ["heif-convert"], "avifdec": ["avifdec", "-d", "8"]}[program]
        subprocess.run([*command, self.folder / name, result], check=True, capture_output=True)
        return Image.open(result)

    def assert_decoded_as_by(self, program, name, at_least):
        mine, theirs = self.converted(name), self.reference(name, program)
        mode = "RGBA" if theirs.mode == "RGBA" else "RGB"
        if mine.mode.startswith("I"):  # grey with 16 bits, which Pillow would cut off
            mine = Image.fromarray(numpy.round(numpy.asarray(mine) / 257).astype(numpy.uint8))
        actual, expected = (numpy.asarray(image.convert(mode)) for image in (mine, theirs))
        self.assertEqual(actual.shape, expected.shape, name)
        seen = expected[..., 3] > 0 if mode == "RGBA" else ...
        self.assertGreater(pictures.psnr(actual[seen], expected[seen]), at_least, name)


class Samples(HeifTest):
    def test_every_sampling_and_depth_of_heic(self):
        image = Image.fromarray(smooth(150, 110))
        for sampling, at_least in (("444", SAME), ("422", SUBSAMPLED), ("420", SUBSAMPLED)):
            name = self.put("a.heic", heif.encoded(image, "-q", "90", "-p", f"chroma={sampling}"))
            self.assert_decoded_as_by("heif-convert", name, at_least)

    def test_every_sampling_depth_and_range_of_avif(self):
        image = Image.fromarray(smooth(151, 111))
        for sampling, at_least in (("444", SAME), ("422", SUBSAMPLED), ("420", SUBSAMPLED), ("400", SAME)):
            for depth in ("8", "10", "12"):
                for range_ in ("full", "limited"):
                    if (sampling, depth, range_) == ("400", "8", "limited"):
                        continue  # avifdec shows it as if it were full
                    options = ("-s", "9", "-y", sampling, "-d", depth, "-r", range_)
                    name = self.put("a.avif", heif.encoded(image, *options, codec="av1"))
                    with self.subTest(options):
                        self.assert_decoded_as_by("avifdec", name, at_least)

    def test_every_matrix(self):
        image = Image.fromarray(smooth(100, 80))
        for matrix in ("0", "1", "4", "5", "6", "7", "8", "9", "12"):
            options = ("-s", "9", "-y", "444", "--cicp", f"1/13/{matrix}")
            name = self.put("a.avif", heif.encoded(image, *options, codec="av1"))
            with self.subTest(matrix):
                self.assert_decoded_as_by("avifdec", name, SAME)

    def test_alpha_multiplied_or_not(self):
        samples = numpy.dstack([smooth(90, 70), numpy.mgrid[0:70, 0:90][1] * 2 + 60]).astype(numpy.uint8)
        image = Image.fromarray(samples)
        self.assert_decoded_as_by("heif-convert", self.put("a.heic", heif.encoded(image, "-q", "90", "-p", "chroma=444")), SAME)
        for options in ((), ("-p",)):
            name = self.put("a.avif", heif.encoded(image, "-s", "9", *options, codec="av1"))
            self.assert_decoded_as_by("avifdec", name, SAME)

    def test_a_smaller_alpha_plane_is_scaled(self):
        colors = heif.nclx(1, 13, 6)
        ramp = numpy.repeat(numpy.arange(40, 168, 2, dtype=numpy.uint8)[None], 64, 0)
        file = heif.File()
        file.add_coded(heif.tile(Image.fromarray(smooth(128, 128)), "-q", "90"), colors)
        file.refer("auxl", file.add_coded(heif.tile(Image.fromarray(ramp), "-L"), heif.auxc(), hidden=True), 1)
        alpha = numpy.asarray(self.converted(self.put("a.heic", file.file())))[..., 3].astype(int)
        self.assertEqual(alpha.shape, (128, 128))
        self.assertLessEqual(abs(alpha[:, 2:-2] - (39.5 + numpy.arange(128))[2:-2]).max(), 1.5)

    def test_ten_bits_become_sixteen(self):
        image = Image.fromarray(smooth(90, 70))
        name = self.put("a.avif", heif.encoded(image, "-s", "9", "-d", "10", codec="av1"))
        path = self.only(self.convert({"formatType": TIFF, "resizeType": 9, "highQuality": 0}, name))
        self.assertEqual(exiftool(path)["IFD0:BitsPerSample"], "16 16 16")


class Structures(HeifTest):
    def test_tiles_as_telephones_write_them(self):
        colors = heif.nclx(1, 13, 6)
        for codec in ("hevc", "av1"):
            file = heif.grid(smooth(300, 200), 128, codec=codec, properties=[colors], before=[colors])
            self.assert_decoded_as_by("heif-convert", self.put("a.heic", file.file()), SUBSAMPLED)

    def test_every_turn_reflection_and_cut_in_every_order(self):
        picture = heif.tile(Image.fromarray(smooth(96, 80)), "-q", "90", "-p", "chroma=444")
        steps = [heif.irot(1), heif.imir(0), heif.imir(1), heif.clap(60, 50, (5, 1), (-3, 1))]
        for first in steps:
            for second in steps:
                file = heif.File()
                file.add_coded(picture, heif.nclx(1, 13, 6), first, *([second] if second != first else []))
                with self.subTest((first, second)):
                    self.assert_decoded_as_by("heif-convert", self.put("a.heic", file.file()), SAME)

    def test_turned_tiles_convert_like_turned_pixels(self):
        file = heif.grid(pictures.corners(256, 192), 64, "-q", "90", properties=[heif.nclx(1, 13, 6), heif.irot(3)])
        path = self.only(self.convert({"formatType": PNG, "resizeType": 2, "maxSize": 100.0}, self.put("a.heic", file.file())))
        self.assertEqual(pictures.quarters(path), "wrgb")
        self.assertEqual(Image.open(path).size, (75, 101))

    def test_an_overlay(self):
        colors = heif.nclx(1, 13, 6)
        file = heif.File()
        parts = [file.add_coded(heif.tile(Image.fromarray(smooth(*size)), "-q", "90", "-p", "chroma=444"), colors, hidden=True)
                 for size in ((100, 80), (64, 64))]
        description = struct.pack(">BBHHHHHHhhhh", 0, 0, 0xFFFF, 0x8080, 0, 0xFFFF, 140, 110, 10, 5, 70, 40)
        file.primary = file.add("iovl", description, [heif.ispe(140, 110)], method=1)
        file.refer("dimg", file.primary, *parts)
        self.assert_decoded_as_by("heif-convert", self.put("a.heic", file.file()), SAME)

    def test_a_turn_that_tiles_repeat_counts_once(self):
        Image.fromarray(smooth(256, 128)).save(self.folder / "a.png")
        for turn in ("--irot 1", "--irot 2", "--imir 1", "--imir 0"):
            samples = []
            for name, grid in (("whole", ()), ("tiles", ("-g", "2x2"))):
                subprocess.run(["avifenc", "-s", "9", *grid, *turn.split(), self.folder / "a.png", self.folder / f"{name}.avif"],
                               check=True, capture_output=True)
                done = self.kestrinectl("convert", "--percent", "100", "--format", "png", "--out", turn, f"{name}.avif")
                self.assertEqual(done.returncode, 0, done)
                samples.append(numpy.asarray(Image.open(self.folder / turn / f"{name}.png")))
            self.assertEqual(samples[0].shape, samples[1].shape, turn)
            self.assertGreater(pictures.psnr(*samples), 35, turn)

    def test_sequences_give_their_first_frame_and_a_warning(self):
        frames = []
        for i in range(3):
            frames.append(self.folder / f"{i}.png")
            Image.fromarray(numpy.roll(smooth(90, 70), 9 * i, 1)).save(frames[-1])
        subprocess.run(["avifenc", "-s", "9", *frames, self.folder / "a.avif"], check=True, capture_output=True)
        self.assert_decoded_as_by("avifdec", "a.avif", SAME)
        done = self.kestrinectl("convert", "--set", "S", "a.avif")
        self.assertIn(b"only frame 1 of 3 is converted", done.stderr)


class Colours(HeifTest):
    def test_a_profile_is_kept(self):
        profile = pictures.icc()
        picture = heif.tile(Image.fromarray(smooth(64, 64)), "-q", "90")
        file = heif.File()
        file.add_coded(picture, heif.prof(profile))
        self.assertEqual(self.converted(self.put("a.heic", file.file())).info["icc_profile"], profile)

    def test_coding_points_of_srgb_need_no_profile_and_others_get_one(self):
        picture = heif.tile(Image.fromarray(smooth(64, 64)), "-q", "90")
        for primaries, name in ((1, None), (12, "Display P3"), (9, "BT.2020")):
            file = heif.File()
            file.add_coded(picture, heif.nclx(primaries, 13, 6))
            path = self.converted(self.put("a.heic", file.file())).filename
            self.assertEqual(exiftool(path).get("ICC_Profile:ProfileDescription"), name)


class Metadata(HeifTest):
    def test_exif_is_carried_upright_with_the_resolution(self):
        camera = [(0x010F, 2, 4, b"Cam\0")]
        for order in "<>":
            picture = heif.tile(Image.fromarray(smooth(64, 64)), "-q", "90")
            file = heif.File()
            file.add_coded(picture, heif.nclx(1, 13, 6), heif.irot(1))
            file.add_exif(1, pictures.exif(6, order, camera), b"Exif\0\0")
            subprocess.run(["rm", "-rf", self.folder / "S"], check=True)
            path = self.only(self.convert({"formatType": JPEG, "resizeType": 9, "attachExifData": 1, "autoRotate": 1},
                                          self.put("a.heic", file.file())))
            tags = exiftool(path)
            self.assertEqual((tags["IFD0:Make"], tags["IFD0:Orientation"]), ("Cam", "1"))


class Damage(HeifTest):
    def test_cut_off_files_give_nothing(self):
        for name, codec in (("a.heic", "hevc"), ("a.avif", "av1")):
            data = heif.encoded(Image.fromarray(pictures.photo(90, 70)), codec=codec)
            self.put(name, data[:len(data) * 2 // 3])
            self.assertEqual(self.convert({"formatType": PNG}, name), [], name)

    def test_a_preview_never_stands_for_the_picture(self):
        """The main picture cannot be decoded, its thumbnail could be."""
        good, bad = (heif.tile(Image.fromarray(smooth(64, 64)), "-q", "90") for _ in range(2))
        bad.data = bad.data[:len(bad.data) // 3]
        file = heif.File()
        file.add_coded(bad, heif.nclx(1, 13, 6))
        file.refer("thmb", file.add_coded(good, heif.nclx(1, 13, 6)), 1)
        self.assertEqual(self.convert({"formatType": PNG}, self.put("a.heic", file.file())), [])

    def test_a_grid_of_one_tile_repeated_is_too_large_for_its_file(self):
        tile = heif.tile(Image.new("RGB", (512, 512), "red"), "-q", "50")
        file = heif.File()
        number = file.add_coded(tile, hidden=True)
        file.primary = file.add_grid([number] * 4096, 64, 32768, 32768)
        self.put("a.heic", file.file())
        self.store({"name": "S"}, selection=[(0, 1)])
        done = self.kestrinectl("convert", "a.heic")
        self.assertEqual(done.returncode, 1)
        self.assertIn(b"too short", done.stderr)


if __name__ == "__main__":
    main()
