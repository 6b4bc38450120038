"""The generators that run during the build. Arguments: their directory, the OLED's lists, the
bitmap font, the directory of the other fonts."""

import pathlib
import subprocess
import sys
import tempfile
import unittest

from PIL import Image

scripts, lists, hex_font, fonts = sys.argv[1:]


class Generators(unittest.TestCase):
    def setUp(self):
        place = tempfile.TemporaryDirectory()
        self.addCleanup(place.cleanup)
        self.place = pathlib.Path(place.name)

    def run_on(self, text, script, *arguments):
        """The status and the messages of a generator for a description."""
        (self.place / "given").write_bytes(text if isinstance(text, bytes) else text.encode())
        command = [sys.executable, "-B", f"{scripts}/{script}", "given", *arguments]
        ended = subprocess.run(command, cwd=self.place, stderr=subprocess.PIPE)
        return ended.returncode, ended.stderr.decode()

    def test_refuses_lists_that_do_not_fill_the_tables(self):
        good = pathlib.Path(lists).read_text(encoding="utf-8")
        for before, after, message in (
            ("卫星", "卫卫", "ideographs: 195 characters instead of 196"),
            ("卫星", "卫星龙", "ideographs: 197 characters instead of 196"),
            ("卫星", "卫Ж", "Ж is no ideograph that a text may hold"),
            ("星 电", "星 龙", "龙 repeats nothing"),
            ("星 电", "星", "repeats: 1 characters instead of 2"),
            ("█", "✓", "a glyph is too wide for its cell"),
            ("█", "\ue000", "the font has no glyph for \ue000"),
            ("█", b"\xe2\x96", "can't decode bytes"),
            ("latin ", "letters ", 'cannot parse "letters '),
        ):
            after = after if isinstance(after, bytes) else after.encode()
            text = good.encode().replace(before.encode(), after, 1)
            status, said = self.run_on(text, "glyphs.py", "source", hex_font, "x.h", "out.cpp")
            self.assertEqual(status, 1, message)
            self.assertIn(message, said)
        status, said = self.run_on(good, "glyphs.py", "source", hex_font, "x.h", "out.cpp")
        self.assertEqual((status, said), (0, ""), "the control")

    def test_names_each_character_that_the_tables_lack(self):
        texts = """// 龙 is only talked of
            const char *a = "卫星 ok"; // and "龙"
            const char *b = "卫龙" "é\\"Ж", c = '"', *d = "//电";"""
        (self.place / "texts.h").write_text(texts, encoding="utf-8")
        good = pathlib.Path(lists).read_text(encoding="utf-8")
        self.assertEqual(
            self.run_on(good, "glyphs.py", "check", "texts.h"),
            (
                1,
                "".join(
                    f"texts.h:3: no glyph for {character}\n"
                    for character in ("龙 (U+9F99)", "é (U+00E9)", "Ж (U+0416)")
                ),
            ),
        )
        (self.place / "texts.h").write_text('"卫星 ok"', encoding="utf-8")
        self.assertEqual(self.run_on(good, "glyphs.py", "check", "texts.h"), (0, ""))

    def test_names_the_line_of_a_description_that_cannot_be_followed(self):
        start = "font DejaVuSans.ttf\npicture one 40 20 black\n"
        for line, complaint in (
            ("circle 1 1 1 white", '"circle" is no element'),
            ("box 1 1 1", "something is missing at the end"),
            ("box 0 0 1 1 0 white white", 'more than "box" takes'),
            ("box 0 0 1 1 0 grey", '"grey" is no colour'),
            ("text middle 20 10 10 white x", '"middle" is no place of a text'),
            ("text centre 20 10 20 white Wide text", "does not lie wholly inside"),
            ("text bottom-right 41 20 10 white x", "does not lie wholly inside"),
            ("text top 20 0 10 white 龙", 'the font lacks a character of "龙"'),
            ("font None.ttf", "there is no font .*None.ttf"),
        ):
            status, said = self.run_on(f"{start}{line}\n", "pictures.py", fonts, "bmp", ".")
            self.assertEqual(status, 1, complaint)
            self.assertRegex(said, f"^pictures.py: given:3: .*{complaint}")
            self.assertFalse((self.place / "one.bmp").exists())
        fits = f"{start}text centre 20 10 10 white fits\n"
        self.assertEqual(self.run_on(fits, "pictures.py", fonts, "bmp", "."), (0, ""))
        self.assertTrue((self.place / "one.bmp").exists(), "the control")

    def test_draws_to_the_pixel(self):
        text = (
            "# A comment\n\npicture p%d 4 2 #102030 2\nbox 1 0 2 1 0 #ff0000\n"
            "line 0 1.5 2 1.5 1 white\n"
        )
        self.assertEqual(self.run_on(text, "pictures.py", fonts, "bmp", "."), (0, ""))
        ground, red, white = (16, 32, 48), (255, 0, 0), (255, 255, 255)
        for name in ("p0.bmp", "p1.bmp"):
            pixels = list(Image.open(self.place / name).getdata())
            self.assertEqual(pixels[:4], [ground, red, red, ground])
            self.assertEqual((pixels[5], pixels[7]), (white, ground))


unittest.main(argv=sys.argv[:1])
