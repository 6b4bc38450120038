#!/usr/bin/env python3
"""Draws small pictures from a description.

    pictures.py DESCRIPTION FONT_DIRECTORY source HEADER FILE
    pictures.py DESCRIPTION FONT_DIRECTORY bmp DIRECTORY

"source" writes a C++ file that defines, as HEADER declares them, arrays of RGB565 pixels (two
bytes, the high one first, from the top row on); "bmp" writes one 24-bit BMP file a picture.

A description has one element a line. Places and sizes are in pixels from the top left corner and
may have a fraction (a font's size may not); a colour is "black", "white" or "#rrggbb"; a line that
starts with "# " and an empty one are skipped.

    font FILE                                    the font of the texts that follow
    picture NAME WIDTH HEIGHT COLOUR [FRAMES]    starts a picture filled with the colour; with a
                                                 number of frames, "%d" in the name becomes 0, 1 ..
    text ANCHOR X Y SIZE COLOUR WORDS            one line; the point is in the "centre" of the ink
                                                 or at its "top", "left", "bottom-right" and so on
    line X Y X Y THICKNESS COLOUR                with round ends; a disc when both ends are one
    box X Y WIDTH HEIGHT RADIUS COLOUR           filled, with round corners
    spinner X Y RADIUS DOT COLOUR                a ring of dots, one for each frame, that fade
"""

import argparse
import math
import os
import re
import sys

from cpp_source import write_arrays
from PIL import Image, ImageDraw, ImageFont

# Shapes are drawn so many times as large and reduced, which makes their edges soft.
SCALE = 8
FAINTEST = 0.15
# How much of a text's ink lies left of its point, and above it.
ANCHORS = {
    "top-left": (0, 0),
    "top": (0.5, 0),
    "top-right": (1, 0),
    "left": (0, 0.5),
    "centre": (0.5, 0.5),
    "right": (1, 0.5),
    "bottom-left": (0, 1),
    "bottom": (0.5, 1),
    "bottom-right": (1, 1),
}


class Drawing:
    def __init__(self, fonts):
        self.fonts = fonts
        self.font = None
        self.pictures = {}  # by name
        self.frames = []  # those of the last picture: what is drawn goes to all of them


def set_font(drawing, name):
    drawing.font = os.path.join(drawing.fonts, name)


def start_picture(drawing, name, width, height, background, frames=1):
    if min(width, height, frames) < 1:
        raise ValueError("a picture needs a width, a height and a frame")
    drawing.frames = [Image.new("RGB", (width, height), background) for _ in range(frames)]
    for number, frame in enumerate(drawing.frames):
        drawing.pictures[name.replace("%d", str(number))] = frame


def fill(frame, paint, shape):
    """Lays `paint` over what `shape` draws on an enlarged mask: 0 nothing, 255 all of it."""
    mask = Image.new("L", (frame.width * SCALE, frame.height * SCALE))
    shape(ImageDraw.Draw(mask))
    frame.paste(paint, mask=mask.reduce(SCALE))


def edges(left, top, right, bottom):
    """The enlarged box between the given places; Pillow takes the last pixels, not the ends."""
    left, top, right, bottom = (round(place * SCALE) for place in (left, top, right, bottom))
    return left, top, right - 1, bottom - 1


def disc(on, x, y, diameter, level=255):
    radius = diameter / 2
    on.ellipse(edges(x - radius, y - radius, x + radius, y + radius), level)


def add_line(drawing, x, y, end_x, end_y, thickness, paint):
    def shape(on):
        # Pillow counts from the middle of the first pixel.
        ends = [place * SCALE - 0.5 for place in (x, y, end_x, end_y)]
        on.line(ends, 255, round(thickness * SCALE))
        disc(on, x, y, thickness)
        disc(on, end_x, end_y, thickness)

    for frame in drawing.frames:
        fill(frame, paint, shape)


def add_box(drawing, x, y, width, height, radius, paint):
    outline = edges(x, y, x + width, y + height)
    for frame in drawing.frames:
        fill(frame, paint, lambda on: on.rounded_rectangle(outline, radius * SCALE, 255))


def add_spinner(drawing, x, y, radius, dot, paint):
    steps = len(drawing.frames)
    for step, frame in enumerate(drawing.frames):

        def shape(on):
            for i in range(steps):
                angle = 2 * math.pi * i / steps
                opacity = max(FAINTEST, 1 - (step - i) % steps / max(1, steps - 1))
                place = x + radius * math.sin(angle), y - radius * math.cos(angle)
                disc(on, *place, dot, round(255 * opacity))

        fill(frame, paint, shape)


def ink_of(font, words):
    """The mask of a line of text, without a margin."""
    # U+FFFF is never a character: this is what the font draws for all that it lacks.
    lacking = list(font.getmask("\uffff"))
    if any(list(font.getmask(character)) == lacking for character in words):
        raise ValueError(f'the font lacks a character of "{words}"')
    left, top, right, bottom = font.getbbox(words)
    ink = Image.new("L", (right - left, bottom - top))
    ImageDraw.Draw(ink).text((-left, -top), words, 255, font)
    return ink.crop(ink.getbbox())


def add_text(drawing, anchor, x, y, size, paint, words):
    try:
        font = ImageFont.truetype(drawing.font, size)
    except OSError:
        raise ValueError(f"cannot read the font {drawing.font}")
    ink = ink_of(font, words)
    left = math.floor(x - anchor[0] * ink.width)
    top = math.floor(y - anchor[1] * ink.height)
    for frame in drawing.frames:
        if left < 0 or top < 0 or left + ink.width > frame.width or top + ink.height > frame.height:
            raise ValueError(
                f'"{words}" needs {ink.width} x {ink.height} pixels and does not lie wholly inside'
            )
        frame.paste(paint, (left, top), ink)


def anchor(name):
    if name not in ANCHORS:
        raise ValueError(f'"{name}" is no place of a text')
    return ANCHORS[name]


def colour(name):
    if not re.fullmatch("black|white|#[0-9a-fA-F]{6}", name):
        raise ValueError(f'"{name}" is no colour')
    return name


# How each element's words are read. The last one takes the rest of the line.
ELEMENTS = {
    "font": (set_font, str),
    "picture": (start_picture, str, int, int, colour, int),
    "text": (add_text, anchor, float, float, int, colour, str),
    "line": (add_line, float, float, float, float, float, colour),
    "box": (add_box, float, float, float, float, float, colour),
    "spinner": (add_spinner, float, float, float, float, colour),
}


def follow(drawing, line):
    element, *rest = line.split(None, 1)
    if element not in ELEMENTS:
        raise ValueError(f'"{element}" is no element')
    draw, *kinds = ELEMENTS[element]
    words = rest[0].split(None, len(kinds) - 1) if rest else []
    if len(words) < len(kinds) - len(draw.__defaults__ or ()):
        raise ValueError("something is missing at the end")
    if kinds[-1] is not str and " " in words[-1]:
        raise ValueError(f'more than "{element}" takes')
    draw(drawing, *(kind(word) for kind, word in zip(kinds, words)))


def draw(description, fonts):
    """The pictures by name."""
    drawing = Drawing(fonts)
    with open(description, encoding="utf-8") as file:
        for number, line in enumerate(file, 1):
            line = line.strip()
            if line and not line.startswith("# "):
                try:
                    follow(drawing, line)
                except ValueError as error:
                    raise ValueError(f"{description}:{number}: {error}")
    return drawing.pictures


def rgb565(picture):
    pixels = ((r & 0xF8 | g >> 5, g << 3 & 0xE0 | b >> 3) for r, g, b in picture.getdata())
    return bytes(byte for pixel in pixels for byte in pixel)


def declaration(name, picture):
    return f"sa1230_picture<{picture.width}, {picture.height}> {name}"


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("description")
    parser.add_argument("fonts")
    forms = parser.add_subparsers(dest="form", required=True)
    for form, names in {"source": ["header", "file"], "bmp": ["directory"]}.items():
        of_form = forms.add_parser(form)
        for name in names:
            of_form.add_argument(name)
    given = parser.parse_args()
    pictures = draw(given.description, given.fonts)
    if given.form == "source":
        arrays = {declaration(*item): rgb565(item[1]) for item in pictures.items()}
        write_arrays(given.file, given.header, arrays)
    else:
        os.makedirs(given.directory, exist_ok=True)
        for name, picture in pictures.items():
            picture.save(os.path.join(given.directory, name + ".bmp"))


if __name__ == "__main__":
    try:
        main()
    except (OSError, ValueError) as error:
        sys.exit(f"pictures.py: {error}")
