#!/usr/bin/env python3
"""Draws small pictures from a description.

usage: pictures.py DESCRIPTION FONT_DIRECTORY source HEADER FILE
       pictures.py DESCRIPTION FONT_DIRECTORY bmp DIRECTORY

"source" writes a C++ file that defines the arrays of RGB565 pixels that HEADER declares (two bytes
a pixel, the high one first, top row first); "bmp" writes one 24-bit BMP file per picture.

A description has one element per line. Positions and sizes are in pixels from the top left corner
and may have a fraction (a font's size may not); a colour is "black", "white" or "#rrggbb"; empty
lines and lines that start with "# " are skipped.

    font FILE                                    the font of the texts that follow
    picture NAME WIDTH HEIGHT COLOUR [FRAMES]    starts a picture filled with the colour; with a
                                                 number of frames, "%d" in the name becomes 0, 1 ..
    text ANCHOR X Y SIZE COLOUR WORDS            one line; X Y is the "centre" of its ink or its
                                                 "top", "left", "bottom-right" and so on
    line X Y X Y THICKNESS COLOUR                with round ends; a disc if both ends are equal
    box X Y WIDTH HEIGHT RADIUS COLOUR           filled, with round corners
    spinner X Y RADIUS DOT COLOUR                a ring of fading dots, one for each frame
"""

import math
import os
import re
import sys

from cpp_source import write_arrays
from PIL import Image, ImageDraw, ImageFont

# Shapes are drawn enlarged by this factor and then reduced, which smooths their edges.
SCALE = 8
FAINTEST = 0.15
# The share of a text's ink that lies left of its point, and above it.
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
        self.frames = []  # of the last picture; elements are drawn on all of them


def set_font(drawing, name):
    drawing.font = os.path.join(drawing.fonts, name)
    if not os.path.exists(drawing.font):
        raise ValueError(f"there is no font {drawing.font}")


def start_picture(drawing, name, width, height, background, frames=1):
    if min(width, height, frames) < 1:
        raise ValueError("a picture needs a width, a height and a frame")
    drawing.frames = [Image.new("RGB", (width, height), background) for _ in range(frames)]
    for number, frame in enumerate(drawing.frames):
        drawing.pictures[name.replace("%d", str(number))] = frame


def fill(frames, paint, shape):
    """Lays `paint` over what `shape` draws on an enlarged mask: 0 nothing, 255 all of it."""
    for frame in frames:
        mask = Image.new("L", (frame.width * SCALE, frame.height * SCALE))
        shape(ImageDraw.Draw(mask))
        frame.paste(paint, mask=mask.reduce(SCALE))


def edges(left, top, right, bottom):
    """The enlarged box; Pillow wants the last pixels that belong to it, not its ends."""
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

    fill(drawing.frames, paint, shape)


def add_box(drawing, x, y, width, height, radius, paint):
    outline = edges(x, y, x + width, y + height)
    fill(drawing.frames, paint, lambda on: on.rounded_rectangle(outline, radius * SCALE, 255))


def add_spinner(drawing, x, y, radius, dot, paint):
    steps = len(drawing.frames)
    for step, frame in enumerate(drawing.frames):

        def shape(on):
            for i in range(steps):
                angle = 2 * math.pi * i / steps
                opacity = max(FAINTEST, 1 - (step - i) % steps / max(1, steps - 1))
                place = x + radius * math.sin(angle), y - radius * math.cos(angle)
                disc(on, *place, dot, round(255 * opacity))

        fill([frame], paint, shape)


def ink_of(font, words):
    """The mask of a line of text, without a margin."""
    # U+FFFF is never a character, so this is what the font draws for a missing glyph.
    lacking = list(font.getmask("\uffff"))
    if any(list(font.getmask(character)) == lacking for character in words):
        raise ValueError(f'the font lacks a character of "{words}"')
    left, top, right, bottom = font.getbbox(words)
    ink = Image.new("L", (right - left, bottom - top))
    ImageDraw.Draw(ink).text((-left, -top), words, 255, font)
    return ink.crop(ink.getbbox())


def add_text(drawing, anchor, x, y, size, paint, words):
    ink = ink_of(ImageFont.truetype(drawing.font, size), words)
    left = math.floor(x - anchor[0] * ink.width)
    top = math.floor(y - anchor[1] * ink.height)
    for frame in drawing.frames:
        if left < 0 or top < 0 or left + ink.width > frame.width or top + ink.height > frame.height:
            raise ValueError(f'"{words}", {ink.width} x {ink.height}, does not lie wholly inside')
        frame.paste(paint, (left, top), ink)


def anchor(name):
    if name not in ANCHORS:
        raise ValueError(f'"{name}" is no place of a text')
    return ANCHORS[name]


def colour(name):
    if not re.fullmatch("black|white|#[0-9a-fA-F]{6}", name):
        raise ValueError(f'"{name}" is no colour')
    return name


# How the words of each element are read. The last one takes the rest of the line.
ELEMENTS = {
    "font": (set_font, str),
    "picture": (start_picture, str, int, int, colour, int),
    "text": (add_text, anchor, float, float, int, colour, str),
    "line": (add_line, float, float, float, float, float, colour),
    "box": (add_box, float, float, float, float, float, colour),
    "spinner": (add_spinner, float, float, float, float, colour),
}


def add_element(drawing, line):
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
    """The pictures of a description, by name."""
    drawing = Drawing(fonts)
    with open(description, encoding="utf-8") as file:
        for number, line in enumerate(file, 1):
            line = line.strip()
            if line and not line.startswith("# "):
                try:
                    add_element(drawing, line)
                except ValueError as error:
                    raise ValueError(f"{description}:{number}: {error}")
    return drawing.pictures


def rgb565(picture):
    pixels = ((r & 0xF8 | g >> 5, g << 3 & 0xE0 | b >> 3) for r, g, b in picture.getdata())
    return bytes(byte for pixel in pixels for byte in pixel)


def main(arguments):
    match arguments:
        case [description, fonts, "source", header, file]:
            arrays = {
                f"sa1230_picture<{picture.width}, {picture.height}> {name}": rgb565(picture)
                for name, picture in draw(description, fonts).items()
            }
            write_arrays(file, header, arrays)
        case [description, fonts, "bmp", directory]:
            pictures = draw(description, fonts)
            os.makedirs(directory, exist_ok=True)
            for name, picture in pictures.items():
                picture.save(os.path.join(directory, name + ".bmp"))
        case _:
            sys.exit(__doc__)


if __name__ == "__main__":
    try:
        main(sys.argv[1:])
    except (OSError, ValueError) as error:
        sys.exit(f"pictures.py: {error}")
