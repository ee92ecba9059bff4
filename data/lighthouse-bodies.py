#!/usr/bin/env python3
"""Generates the round bodies of lighthouse.dae, and the texture of its sea.

Writes lighthouse-sea.png, and replaces the geometries "sea-water", "rock-body" and "gallery-body" in lighthouse.dae,
both in the folder of this script. Everything else in the document is written by hand.
"""
import math
import pathlib
import re
import struct
import zlib

FOLDER = pathlib.Path(__file__).resolve().parent


def text(number):
    rounded = round(number, 4)
    return f'{rounded:g}' if rounded else '0'


def unit(vector):
    length = math.sqrt(sum(x * x for x in vector))
    return tuple(x / length for x in vector)


def cross(a, b):
    return (a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0])


class Body:
    """A mesh whose triangles share positions, normals and texture coordinates."""

    def __init__(self, identifier, name):
        self.identifier = identifier
        self.name = name
        self.columns = {'position': {}, 'normal': {}, 'texcoord': {}}
        self.parts = []

    def part(self, name, material):
        self.parts.append((name, material, []))

    def index(self, column, values):
        known = self.columns[column]
        return known.setdefault(' '.join(text(x) for x in values), len(known))

    def triangle(self, corners):
        """Adds a triangle. A corner is a position and a normal, optionally followed by texture coordinates."""
        for corner in corners:
            indices = [self.index('position', corner[0]), self.index('normal', corner[1])]
            if len(corner) > 2:
                indices.append(self.index('texcoord', corner[2]))
            self.parts[-1][2].append(indices)

    def quad(self, a, b, c, d):
        self.triangle([a, b, c])
        self.triangle([a, c, d])

    def flat(self, a, b, c):
        normal = unit(cross([q - p for p, q in zip(a, b)], [q - p for p, q in zip(a, c)]))
        self.triangle([(a, normal), (b, normal), (c, normal)])

    def ring(self, profile, sides):
        """Revolves a profile around the Y axis. It lists radii and heights, on the outside from the bottom up."""
        for (low, bottom), (high, top) in zip(profile, profile[1:]):
            outward = unit((top - bottom, low - high))
            for side in range(sides):
                corners = []
                for turn in (side, side + 1):
                    cosine = math.cos(2 * math.pi * turn / sides)
                    sine = math.sin(2 * math.pi * turn / sides)
                    normal = (cosine * outward[0], outward[1], -sine * outward[0])
                    corners.append(((low * cosine, bottom, -low * sine), normal))
                    corners.append(((high * cosine, top, -high * sine), normal))
                if low > 0:
                    self.triangle([corners[0], corners[2], corners[3]])
                if high > 0:
                    self.triangle([corners[0], corners[3], corners[1]])

    def bar(self, angle, radius, width, bottom, top):
        """Adds an upright square bar at an angle around the Y axis."""
        out = (math.cos(angle), 0, -math.sin(angle))
        aside = (-out[2], 0, out[0])
        feet = []
        for o, s in ((1, 1), (1, -1), (-1, -1), (-1, 1)):
            feet.append(tuple(radius * x + width / 2 * (o * x + s * y) for x, y in zip(out, aside)))
        for i, a in enumerate(feet):
            b = feet[(i + 1) % 4]
            middle = tuple((p + q) / 2 - radius * x for p, q, x in zip(a, b, out))
            normal = unit(middle)
            place = [(p[0], h, p[2]) for p, h in ((a, bottom), (b, bottom), (b, top), (a, top))]
            way = cross([q - p for p, q in zip(place[0], place[1])], [q - p for p, q in zip(place[0], place[2])])
            if sum(x * y for x, y in zip(way, normal)) < 0:
                place.reverse()
            self.quad(*[(p, normal) for p in place])

    def xml(self):
        lines = [f'    <geometry id="{self.identifier}" name="{self.name}">', '      <mesh>']
        for column, params in (('position', 'XYZ'), ('normal', 'XYZ'), ('texcoord', 'ST')):
            values = list(self.columns[column])
            if not values:
                continue
            source = f'{self.identifier}-{column}s'
            lines += [
                f'        <source id="{source}">',
                f'          <float_array id="{source}-array" count="{len(values) * len(params)}">'
                f'{" ".join(values)}</float_array>',
                '          <technique_common>',
                f'            <accessor source="#{source}-array" count="{len(values)}" stride="{len(params)}">',
                '              ' + ''.join(f'<param name="{p}" type="float"/>' for p in params),
                '            </accessor>',
                '          </technique_common>',
                '        </source>',
            ]
        lines += [
            f'        <vertices id="{self.identifier}-vertices">',
            f'          <input semantic="POSITION" source="#{self.identifier}-positions"/>',
            '        </vertices>',
        ]
        for name, material, corners in self.parts:
            lines += [
                f'        <triangles name="{name}" material="{material}" count="{len(corners) // 3}">',
                f'          <input semantic="VERTEX" source="#{self.identifier}-vertices" offset="0"/>',
                f'          <input semantic="NORMAL" source="#{self.identifier}-normals" offset="1"/>',
            ]
            if len(corners[0]) > 2:
                lines.append(f'          <input semantic="TEXCOORD" source="#{self.identifier}-texcoords" offset="2" '
                             'set="0"/>')
            lines += [
                '          <p>' + ' '.join(str(i) for corner in corners for i in corner) + '</p>',
                '        </triangles>',
            ]
        return '\n'.join(lines + ['      </mesh>', '    </geometry>'])


def sea():
    """A disc of radius 1, on which the texture repeats many times."""
    body = Body('sea-water', 'Sea water')
    body.part('sea-water-triangles', 'water')
    sides, repeats, up = 32, 500, (0, 1, 0)
    rim = []
    for side in range(sides + 1):
        x, z = math.cos(2 * math.pi * side / sides), -math.sin(2 * math.pi * side / sides)
        rim.append(((x, 0, z), up, (repeats * x, -repeats * z)))
    for a, b in zip(rim, rim[1:]):
        body.triangle([((0, 0, 0), up, (0, 0)), a, b])
    return body


def rock():
    """A hump of irregular rings. Each facet has its own normal."""
    body = Body('rock-body', 'Rock body')
    body.part('rock-body-triangles', 'stone')
    sides, state = 17, [7]

    def noise():
        state[0] = (state[0] * 1103515245 + 12345) % 2 ** 31
        return state[0] / 2 ** 30 - 1

    rings = []
    for radius, height, rough in ((8.4, -1.2, 0.5), (6.6, 0.15, 1.1), (5.2, 0.7, 0.8), (3.9, 1.15, 0.5), (2.4, 1.5, 0.1)):
        ring = []
        for side in range(sides):
            angle = 2 * math.pi * (side + 0.3 * noise()) / sides
            r = radius + rough * noise()
            ring.append((1.15 * r * math.cos(angle), height + 0.35 * rough * noise(), -r * math.sin(angle)))
        rings.append(ring)
    for low, high in zip(rings, rings[1:]):
        for side in range(sides):
            after = (side + 1) % sides
            body.flat(low[side], low[after], high[after])
            body.flat(low[side], high[after], high[side])
    for side in range(sides):
        body.flat(rings[-1][side], rings[-1][(side + 1) % sides], (0, 1.55, 0))
    return body


def gallery():
    """The round gallery with its railing, and the lantern room with its roof."""
    body = Body('gallery-body', 'Gallery body')
    body.part('gallery-body-walk', 'red')
    body.ring([(1.0, -0.5), (2.1, 0.15), (2.1, 0.5), (0, 0.5)], 24)
    body.part('gallery-body-iron', 'iron')
    for post in range(12):
        body.bar(2 * math.pi * post / 12, 2.0, 0.07, 0.5, 1.25)
    body.ring([(1.95, 1.25), (2.05, 1.25), (2.05, 1.33), (1.95, 1.33), (1.95, 1.25)], 24)
    body.ring([(1.28, 0.5), (1.28, 0.75), (1.2, 0.75)], 12)
    for mullion in range(12):
        body.bar(2 * math.pi * mullion / 12, 1.2, 0.07, 0.75, 2.3)
    body.ring([(1.2, 2.25), (1.55, 2.3), (1.5, 2.42), (0.75, 3.0), (0.18, 3.22), (0.18, 3.42), (0, 3.5)], 12)
    body.part('gallery-body-panes', 'panes')
    body.ring([(1.2, 0.75), (1.2, 2.28)], 12)
    return body


def sea_picture():
    """A tileable image of ripples in a few colors."""
    size, colors = 96, 12
    waves = [(1, 2, 0.3, 1.0), (3, -1, 1.7, 0.8), (-2, 5, 4.1, 0.7), (6, 3, 2.2, 0.5), (-7, 4, 5.3, 0.4), (4, 9, 0.9, 0.35)]
    rows = b''
    for y in range(size):
        rows += b'\0'
        for x in range(size):
            height = sum(a * math.sin(2 * math.pi * (u * x + v * y) / size + p) for u, v, p, a in waves)
            rows += bytes([min(colors - 1, max(0, int((height + 2.4) / 4.8 * colors)))])
    low, high = (24, 78, 110), (50, 112, 138)
    palette = b''.join(bytes(round(a + (b - a) * (i / (colors - 1)) ** 1.5) for a, b in zip(low, high))
                       for i in range(colors))

    def chunk(kind, data):
        return struct.pack('>I', len(data)) + kind + data + struct.pack('>I', zlib.crc32(kind + data))

    return (b'\x89PNG\r\n\x1a\n' + chunk(b'IHDR', struct.pack('>IIBBBBB', size, size, 8, 3, 0, 0, 0)) +
            chunk(b'PLTE', palette) + chunk(b'IDAT', zlib.compress(rows, 9)) + chunk(b'IEND', b''))


def main():
    path = FOLDER / 'lighthouse.dae'
    document = path.read_text(encoding='utf-8')
    for body in (sea(), rock(), gallery()):
        pattern = re.compile(rf'    <geometry id="{body.identifier}".*?</geometry>', re.DOTALL)
        document, count = pattern.subn(lambda _, b=body: b.xml(), document)
        assert count == 1, body.identifier
    path.write_text(document, encoding='utf-8')
    (FOLDER / 'lighthouse-sea.png').write_bytes(sea_picture())


if __name__ == '__main__':
    main()
