"""Generated pictures with and without a horizon, for training and testing the horizon network.

A picture is a float32 array of height x width x 3, red first, 0 to 1. Everything is drawn from the generator handed in,
so a seed gives the same pictures on every machine.
"""

import numpy as np

TABLE = 256  # side of the lattice of random values that noise reads, a power of two


class Canvas:
    """Pixel coordinates in units of the shorter side, the origin in the middle, and the noise of one picture."""

    def __init__(self, rng, height, width):
        self.rng, self.height, self.width = rng, height, width
        unit = min(height, width)
        y, x = np.mgrid[0:height, 0:width].astype(np.float32)
        self.x, self.y = (x - width / 2) / unit, (y - height / 2) / unit
        self.half_width, self.half_height = width / unit / 2, height / unit / 2
        self.pixel = 1.0 / unit
        self.lattice = rng.random(TABLE * TABLE, dtype=np.float32)

    def value_noise(self, u, v):
        """Smooth noise of 0 to 1, one random value at each whole (u, v)."""
        u, v = np.asarray(u, np.float32), np.asarray(v, np.float32)
        u0, v0 = np.floor(u), np.floor(v)
        fu, fv = u - u0, v - v0
        fu, fv = fu * fu * (3 - 2 * fu), fv * fv * (3 - 2 * fv)
        i, j = u0.astype(np.int32) & (TABLE - 1), (v0.astype(np.int32) & (TABLE - 1)) * TABLE
        k, m = (i + 1) & (TABLE - 1), (j + TABLE) & (TABLE * TABLE - 1)
        top = self.lattice.take(j + i) * (1 - fu) + self.lattice.take(j + k) * fu
        low = self.lattice.take(m + i) * (1 - fu) + self.lattice.take(m + k) * fu
        return top + (low - top) * fv

    def fractal(self, u, v, octaves=4, fall=0.5):
        total, weight, scale = 0.0, 0.0, 1.0
        for octave in range(octaves):
            amount = fall**octave
            total = total + amount * self.value_noise(u * scale + 17.3 * octave, v * scale + 9.1 * octave)
            weight += amount
            scale *= 2.03
        return total / weight

    def turned(self, angle):
        c, s = np.cos(angle), np.sin(angle)
        return self.x * c + self.y * s, self.y * c - self.x * s

    def step(self, distance, softness=None):
        """0 where the distance is negative, 1 where it is positive, antialiased."""
        width = self.pixel if softness is None else max(softness, self.pixel)
        t = np.clip(distance / width + 0.5, 0, 1)
        return (t * t * (3 - 2 * t)).astype(np.float32)

    def ellipse(self, x, y, rx, ry, angle=0.0, softness=None):
        c, s = np.cos(angle), np.sin(angle)
        dx, dy = self.x - x, self.y - y
        radius = np.sqrt(((dx * c + dy * s) / rx) ** 2 + ((dy * c - dx * s) / ry) ** 2)
        return self.step((1 - radius) * min(rx, ry), softness)

    def box(self, x0, y0, x1, y1, angle=0.0, softness=None):
        u, v = self.turned(angle)
        return self.step(np.minimum(np.minimum(u - x0, x1 - u), np.minimum(v - y0, y1 - v)), softness)


def blend(under, over, mask):
    return under + (np.asarray(over, np.float32) - under) * mask[..., None]


def colour(rng, dark=0.0, light=1.0, saturation=1.0):
    value = rng.uniform(dark, light)
    raw = rng.random(3)
    raw = raw.mean() + (raw - raw.mean()) * saturation * rng.uniform(0.15, 1)
    return np.clip(raw / max(raw.max(), 1e-3) * value, 0, 1).astype(np.float32)


def mix(a, b, t):
    return a + (b - a) * t[..., None]


# ---------------------------------------------------------------------------------------------------- sky and ground

SKIES = [  # colour overhead, colour at the horizon
    ((0.25, 0.45, 0.80), (0.75, 0.85, 0.95)),
    ((0.10, 0.30, 0.70), (0.55, 0.75, 0.95)),
    ((0.30, 0.35, 0.55), (0.98, 0.65, 0.35)),
    ((0.15, 0.15, 0.35), (0.90, 0.45, 0.30)),
    ((0.60, 0.62, 0.66), (0.85, 0.86, 0.88)),
    ((0.40, 0.42, 0.46), (0.70, 0.70, 0.72)),
    ((0.02, 0.03, 0.10), (0.20, 0.20, 0.35)),
    ((0.55, 0.40, 0.60), (0.98, 0.80, 0.75)),
    ((0.85, 0.88, 0.92), (0.96, 0.96, 0.96)),
    ((0.70, 0.55, 0.35), (0.98, 0.88, 0.60)),
]
GROUNDS = [  # two colours that the texture lies between
    ((0.10, 0.25, 0.05), (0.45, 0.60, 0.20)),
    ((0.25, 0.18, 0.10), (0.60, 0.48, 0.30)),
    ((0.60, 0.50, 0.35), (0.90, 0.80, 0.60)),
    ((0.70, 0.75, 0.80), (0.98, 0.98, 1.00)),
    ((0.15, 0.15, 0.15), (0.45, 0.45, 0.45)),
    ((0.35, 0.35, 0.10), (0.80, 0.75, 0.35)),
]


def jitter(rng, pair, amount=0.08):
    return [np.clip(np.asarray(c) + rng.normal(0, amount, 3), 0, 1).astype(np.float32) for c in pair]


def draw_sky(canvas, rng, height_above, span):
    """The sky by the height above the horizon; `span` is the height at which the overhead colour is reached."""
    over, low = jitter(rng, SKIES[rng.integers(len(SKIES))])
    picture = mix(low, over, np.clip(height_above / span, 0, 1) ** rng.uniform(0.5, 1.3))
    if rng.random() < 0.6:
        size = rng.uniform(0.15, 0.8)
        # Clouds are flatter the nearer they are to the horizon.
        flat = rng.uniform(1.2, 4.0)
        cloud = canvas.fractal(canvas.x / size + rng.uniform(0, 99), height_above * flat / size + rng.uniform(0, 99), 5)
        amount = np.clip((cloud - rng.uniform(0.35, 0.6)) * rng.uniform(2, 6), 0, 1) * rng.uniform(0.3, 1)
        picture = mix(picture, np.clip(low * rng.uniform(0.6, 1.3) + rng.uniform(-0.1, 0.2), 0, 1), amount)
    if rng.random() < 0.25:
        x, y = rng.uniform(-0.6, 0.6), rng.uniform(0.02, 0.5)
        distance = np.sqrt((canvas.x - x) ** 2 + (height_above - y) ** 2)
        glow = np.exp(-distance / rng.uniform(0.05, 0.3)) * rng.uniform(0.4, 1)
        picture = mix(picture, np.float32([1, 0.93, 0.75]), glow)
    return picture, low


def draw_ground(canvas, rng, depth, across, low_sky):
    """Land or water by the depth below the horizon: its texture shrinks towards the horizon."""
    depth = np.maximum(depth, 0.4 * canvas.pixel)
    kind = rng.random()
    scale = rng.uniform(1.0, 5.0)
    u, v = across / depth * scale * 0.4 + 50, scale / (depth + 0.02) + rng.uniform(0, 50)
    if kind < 0.4:  # water: the sky's light in flat streaks
        base = np.clip(low_sky * rng.uniform(0.3, 1.0) + np.asarray([-0.05, 0.0, 0.08]) * rng.uniform(0, 2), 0, 1)
        streaks = canvas.fractal(across * rng.uniform(2, 8) / (depth + 0.15),
                                 np.log(depth + 0.01) * rng.uniform(8, 25), 3)
        wave = (streaks - 0.5) * rng.uniform(0.05, 0.6)
        picture = np.clip(base + wave[..., None] + (depth * rng.uniform(-0.5, 0.3))[..., None], 0, 1)
        if rng.random() < 0.2:
            shine = np.exp(-(((across - rng.uniform(-0.5, 0.5)) / rng.uniform(0.05, 0.2)) ** 2)) * rng.uniform(0.2, 0.8)
            picture = mix(picture, low_sky, shine * (0.3 + streaks * 0.7))
    elif kind < 0.55:  # against the light
        picture = np.broadcast_to(colour(rng, 0.0, 0.15), canvas.x.shape + (3,)).astype(np.float32)
        picture = picture + (canvas.fractal(u, v, 3)[..., None] - 0.5) * 0.06
    else:
        dark, light = jitter(rng, GROUNDS[rng.integers(len(GROUNDS))])
        shade = rng.uniform(0.5, 1.05)
        rough = canvas.fractal(u, v, 4, 0.6) * 1.6 - 0.3
        large = canvas.fractal(across * rng.uniform(0.5, 2) / (depth + 0.2), 2 / (depth + 0.2), 2)
        picture = mix(dark, light, np.clip(rough * 0.6 + large * 0.5, 0, 1)) * shade
    if rng.random() < 0.4:  # furrows, roads, planks: lines to a vanishing point
        ray = np.sin((across - rng.uniform(-0.5, 0.5)) / (depth + 0.03) * rng.uniform(1, 6))
        picture = picture * (1 + 0.25 * rng.random() * np.sign(ray))[..., None]
    haze = np.exp(-depth / rng.uniform(0.02, 0.25)) * rng.uniform(0, 0.7)
    return mix(np.clip(picture, 0, 1), low_sky, haze.astype(np.float32)).astype(np.float32)


def draw_things(canvas, rng, picture, horizon_y, limit):
    """Trees, people, boats: they hide at most `limit` of the horizon's length."""
    left = limit * 2 * canvas.half_width
    for _ in range(rng.integers(0, 5)):
        width = rng.uniform(0.02, 0.3)
        if width > left:
            continue
        left -= width
        x = rng.uniform(-canvas.half_width, canvas.half_width)
        height = width * rng.uniform(0.6, 4)
        foot = horizon_y + rng.uniform(-0.3, 0.8) * height
        tint = colour(rng, 0.0, 0.7)
        if rng.random() < 0.5:
            mask = canvas.ellipse(x, foot - height / 2, width / 2, height / 2)
            rough = canvas.fractal(canvas.x * 25, canvas.y * 25, 3)
            mask = mask * np.clip((rough - 0.2) * 4, 0, 1) if rng.random() < 0.6 else mask
        else:
            mask = canvas.box(x - width / 2, foot - height, x + width / 2, foot, rng.normal(0, 0.05))
        shade = 0.8 + 0.4 * canvas.fractal(canvas.x * 12, canvas.y * 12, 3)
        picture = picture + (np.clip(tint * shade[..., None], 0, 1) - picture) * mask[..., None]
    return picture


def with_horizon(canvas, rng):
    tilt = rng.normal(0, 0.05) if rng.random() < 0.7 else rng.uniform(-0.35, 0.35)
    across, down = canvas.turned(tilt)
    place = rng.uniform(-0.78, 0.78) * canvas.half_height
    profile = np.zeros_like(across)
    kind = rng.random()
    if kind < 0.35:  # hills far away
        profile = canvas.fractal(across * rng.uniform(0.8, 4) + 7, np.zeros_like(across), 5) - 0.5
        profile = profile * rng.uniform(0.02, 0.22)
    elif kind < 0.6:  # a line of trees or houses
        comb = canvas.value_noise(np.floor(across * rng.uniform(15, 60)), np.zeros_like(across))
        soft = canvas.fractal(across * rng.uniform(5, 15) + 7, np.zeros_like(across), 5)
        profile = (comb if rng.random() < 0.3 else soft) * rng.uniform(0.01, 0.1)
    depth = down - place + profile
    sky, low = draw_sky(canvas, rng, np.maximum(-depth, 0), canvas.half_height * rng.uniform(0.8, 2.0))
    ground = draw_ground(canvas, rng, down - place + np.maximum(profile, 0), across, low)
    if kind < 0.6 and rng.random() < 0.7:  # what rises over the line is darker or hazier than the plain
        rise = colour(rng, 0.05, 0.5, 0.4) * 0.7 + low * rng.uniform(0, 0.6)
        texture = 0.85 + 0.3 * canvas.fractal(across * 14, down * 14, 3)
        over_line = canvas.step(place + rng.uniform(0, 0.06) - down)
        ground = ground + (np.clip(rise * texture[..., None], 0, 1) - ground) * over_line[..., None]
    soft = canvas.pixel * rng.uniform(0.7, 4)
    picture = blend(sky, ground, canvas.step(depth, soft))
    return draw_things(canvas, rng, picture, place, 0.4) if rng.random() < 0.6 else picture


# ------------------------------------------------------------------------------------------------ without a horizon


def background(canvas, rng):
    """Out of focus: a few large soft colours."""
    first, second = colour(rng, 0.05, 1, 0.7), colour(rng, 0.05, 1, 0.7)
    size = rng.uniform(0.3, 1.5)
    field = canvas.fractal(canvas.x / size + 5, canvas.y / size + 5, rng.integers(1, 3))
    picture = mix(first, second, np.clip(field * 1.8 - 0.4, 0, 1))
    for _ in range(rng.integers(0, 6)):
        mask = canvas.ellipse(rng.uniform(-1, 1), rng.uniform(-1, 1), rng.uniform(0.05, 0.4), rng.uniform(0.05, 0.4), 0,
                              0.15)
        picture = blend(picture, colour(rng), mask * rng.uniform(0.3, 1))
    return picture.astype(np.float32)


def texture(canvas, rng):
    u, v = canvas.turned(rng.uniform(0, np.pi))
    scale = np.exp(rng.uniform(np.log(1.5), np.log(30)))
    field = canvas.fractal(u * scale * rng.uniform(1, 6), v * scale, rng.integers(2, 6), rng.uniform(0.4, 0.8))
    if rng.random() < 0.4:
        field = 0.5 + 0.5 * np.sin(u * rng.uniform(10, 80) + field * rng.uniform(0, 8))
    return mix(colour(rng, 0, 0.7), colour(rng, 0.3, 1), np.clip((field - 0.5) * rng.uniform(1, 4) + 0.5, 0, 1))


def sky_only(canvas, rng):
    horizon = canvas.half_height + rng.uniform(0, 0.4) - canvas.turned(rng.normal(0, 0.2))[1]
    return draw_sky(canvas, rng, horizon, 1.5)[0]


def ground_only(canvas, rng):
    across, down = canvas.turned(rng.normal(0, 0.3))
    depth = down + canvas.half_height + rng.uniform(0.15, 1.5)
    return draw_ground(canvas, rng, depth, across, colour(rng, 0.3, 1, 0.5))


def close_up(canvas, rng):
    picture = background(canvas, rng)
    x, y = rng.uniform(-0.3, 0.3, 2)
    petals, size = rng.integers(1, 12), rng.uniform(0.12, 0.5)
    tint, turn = colour(rng, 0.3, 1), rng.uniform(0, 6)
    if rng.random() < 0.5:
        stem = canvas.box(x - 0.02, y, x + 0.02, 9, rng.normal(0, 0.3))
        picture = blend(picture, colour(rng, 0.1, 0.6), stem)
    for i in range(petals):
        angle = turn + 2 * np.pi * i / petals
        mask = canvas.ellipse(x + np.cos(angle) * size * 0.6, y + np.sin(angle) * size * 0.6, size * 0.6,
                              size * rng.uniform(0.2, 0.6), angle)
        shade = 0.7 + 0.6 * canvas.fractal(canvas.x * 9 + i, canvas.y * 9, 3)
        picture = picture + (np.clip(tint * shade[..., None], 0, 1) - picture) * mask[..., None]
    return blend(picture, colour(rng), canvas.ellipse(x, y, size * 0.25, size * 0.25))


def portrait(canvas, rng):
    picture = background(canvas, rng) if rng.random() < 0.7 else indoors(canvas, rng)
    x, y, size = rng.uniform(-0.25, 0.25), rng.uniform(-0.25, 0.15), rng.uniform(0.12, 0.33)
    coat = colour(rng)
    picture = blend(picture, coat, canvas.ellipse(x, y + size * 3.0, size * rng.uniform(1.8, 2.6), size * 1.9))
    skin = np.float32([0.9, 0.68, 0.53]) * rng.uniform(0.35, 1.05)
    hair = colour(rng, 0.03, 0.6, 0.5)
    picture = blend(picture, hair, canvas.ellipse(x, y - size * 0.2, size * 0.95, size * 1.15, 0, 0.02))
    shade = 0.75 + 0.4 * canvas.step(canvas.x - x, size * 2)
    face = canvas.ellipse(x, y + size * 0.1, size * 0.72, size * 0.95)
    picture = picture + (np.clip(skin * shade[..., None], 0, 1) - picture) * face[..., None]
    for side in (-1, 1):
        eye = canvas.ellipse(x + side * size * 0.28, y - size * 0.05, size * 0.13, size * 0.07)
        picture = blend(picture, (0.1, 0.08, 0.08), eye)
    return blend(picture, (0.6, 0.25, 0.25), canvas.ellipse(x, y + size * 0.55, size * 0.25, size * 0.08))


def animal(canvas, rng):
    """A furry head that fills much of the frame."""
    picture = background(canvas, rng)
    u, v = canvas.turned(rng.uniform(0, 6))
    fur = canvas.fractal(u * 40, v * 10, 4, 0.7)
    x, y, size = rng.uniform(-0.2, 0.2), rng.uniform(-0.1, 0.2), rng.uniform(0.3, 0.6)
    coat = mix(colour(rng, 0.05, 0.6, 0.5), colour(rng, 0.4, 1, 0.5), np.clip(fur * 1.6 - 0.3, 0, 1))
    for dx, dy, r in ((0, 0, 1), (-0.6, -0.8, 0.35), (0.6, -0.8, 0.35), (rng.uniform(-0.6, 0.6), 1.2, 1.2)):
        mask = canvas.ellipse(x + dx * size, y + dy * size, r * size, r * size * rng.uniform(0.8, 1.2), 0, 0.03)
        picture = picture + (coat - picture) * mask[..., None]
    for dx, dy, r in ((-0.4, -0.1, 0.14), (0.4, -0.1, 0.14), (0, 0.35, 0.12)):
        picture = blend(picture, colour(rng, 0, 0.5), canvas.ellipse(x + dx * size, y + dy * size, r * size, r * size))
    return picture


def indoors(canvas, rng):
    """A room: the far wall, side walls, floor and ceiling that meet in its corners, and boxes of furniture."""
    x0, x1 = sorted(rng.uniform(-1, 1, 2) * canvas.half_width * 1.2)
    x0, x1 = min(x0, x1 - 0.3), max(x1, x0 + 0.3)
    y0, y1 = -rng.uniform(0.1, 0.8), rng.uniform(0.05, 0.45)
    wall = colour(rng, 0.3, 1, 0.5)
    cx, cy = (x0 + x1) / 2, (y0 + y1) / 2 + rng.normal(0, 0.1)
    # A side wall is where the ray from the vanishing point leaves through the far wall's side.
    dx = np.maximum(canvas.x - cx, 0) / (x1 - cx) + np.maximum(cx - canvas.x, 0) / (cx - x0)
    dy = np.maximum(canvas.y - cy, 0) / max(y1 - cy, 0.05) + np.maximum(cy - canvas.y, 0) / max(cy - y0, 0.05)
    reach = np.maximum(dx, dy)
    picture = np.broadcast_to(wall, canvas.x.shape + (3,)).astype(np.float32)
    side = canvas.step(reach - 1) * canvas.step(dx - dy)
    picture = blend(picture, wall * rng.uniform(0.6, 1.1), side)
    share = canvas.step(reach - 1) * canvas.step(dy - dx) * (canvas.y > cy)
    picture = blend(picture, colour(rng, 0.1, 0.9, 0.6), share)
    picture = blend(picture, colour(rng, 0.5, 1, 0.2), canvas.step(reach - 1) * canvas.step(dy - dx) * (canvas.y <= cy))
    for _ in range(rng.integers(2, 9)):
        w, h = rng.uniform(0.06, 0.6, 2)
        x, y = rng.uniform(-1, 1) * canvas.half_width, rng.uniform(-0.5, 0.5)
        picture = blend(picture, colour(rng, 0, 1, 0.7), canvas.box(x, y, x + w, y + h, rng.normal(0, 0.03)))
        if rng.random() < 0.5:
            inner = canvas.box(x + w * 0.1, y + h * 0.1, x + w * 0.9, y + h * 0.9)
            picture = blend(picture, colour(rng, 0, 1, 0.7), inner)
    light = np.exp(-((canvas.x - rng.uniform(-1, 1)) ** 2 + (canvas.y - rng.uniform(-1, 0)) ** 2) * rng.uniform(0.3, 2))
    return np.clip(picture * (0.6 + 0.6 * light)[..., None], 0, 1)


def facade(canvas, rng):
    u, v = canvas.turned(rng.normal(0, 0.15))
    scale = 1 + u * rng.uniform(-0.5, 0.5)
    u, v = u / scale, v / scale
    columns, rows = rng.uniform(2, 12, 2)
    fu, fv = (u * columns) % 1, (v * rows) % 1
    mask = (np.minimum(fu, 1 - fu) > rng.uniform(0.1, 0.3)) & (np.minimum(fv, 1 - fv) > rng.uniform(0.1, 0.3))
    each = canvas.value_noise(np.floor(u * columns), np.floor(v * rows))
    wall = mix(colour(rng, 0.2, 0.9, 0.6), colour(rng, 0.2, 0.9, 0.6), canvas.fractal(u * 6, v * 6, 3))
    pane = mix(colour(rng, 0, 0.5, 0.6), colour(rng, 0.2, 1, 0.6), each)
    return wall + (pane - wall) * mask[..., None].astype(np.float32)


def still_life(canvas, rng):
    """A table from above with round things on it."""
    u, v = canvas.turned(rng.uniform(0, np.pi))
    grain = canvas.fractal(u * rng.uniform(1, 4), v * rng.uniform(8, 40), 4, 0.6)
    picture = mix(colour(rng, 0.1, 0.7, 0.6), colour(rng, 0.3, 1, 0.6), grain)
    for _ in range(rng.integers(1, 6)):
        x, y, r = rng.uniform(-0.6, 0.6), rng.uniform(-0.4, 0.4), rng.uniform(0.08, 0.45)
        squeeze, angle = rng.uniform(0.5, 1), rng.uniform(0, 3)
        picture = picture * (1 - 0.5 * canvas.ellipse(x + 0.03, y + 0.05, r, r * squeeze, angle, 0.08))[..., None]
        for part in (1.0, rng.uniform(0.6, 0.95), rng.uniform(0.2, 0.6)):
            picture = blend(picture, colour(rng), canvas.ellipse(x, y, r * part, r * part * squeeze, angle))
    return picture


def shapes(canvas, rng):
    """Edges of every direction but the level one, and boxes."""
    picture = background(canvas, rng)
    for _ in range(rng.integers(1, 7)):
        if rng.random() < 0.5:
            angle = rng.choice([-1, 1]) * rng.uniform(0.6, np.pi / 2) + (np.pi if rng.random() < 0.5 else 0)
            v = canvas.turned(angle)[1] - rng.uniform(-0.5, 0.5)
            tint = colour(rng) * (0.8 + 0.4 * canvas.fractal(canvas.x * 8, canvas.y * 8, 3))[..., None]
            mask = canvas.step(v, rng.uniform(0, 0.05))
            picture = picture + (np.clip(tint, 0, 1) - picture) * mask[..., None]
        else:
            x, y, w, h = rng.uniform(-0.8, 0.5), rng.uniform(-0.6, 0.4), *rng.uniform(0.05, 0.7, 2)
            picture = blend(picture, colour(rng), canvas.box(x, y, x + w, y + h, rng.uniform(0, np.pi)))
    return picture


def bands(canvas, rng):
    """Shelves, steps, blinds, books: several level edges, never a plain under a sky."""
    u, v = canvas.turned(rng.normal(0, 0.1))
    count = rng.uniform(3, 14)
    row = np.floor(v * count)
    each = canvas.value_noise(row + 3, row * 0 + 0.5)
    picture = mix(colour(rng), colour(rng), each) * (0.75 + 0.25 * ((v * count) % 1))[..., None]
    if rng.random() < 0.6:
        across = np.floor(u * rng.uniform(3, 25) + row * 7.7)
        picture = 0.5 * picture + 0.5 * mix(colour(rng), colour(rng), canvas.value_noise(across, row))
    return picture.astype(np.float32)


def forest(canvas, rng):
    leaves = canvas.fractal(canvas.x * rng.uniform(6, 20), canvas.y * rng.uniform(6, 20), 5, 0.7)
    picture = mix(colour(rng, 0.02, 0.3), colour(rng, 0.3, 1), np.clip(leaves * 2.2 - 0.6, 0, 1))
    for _ in range(rng.integers(0, 12)):
        x, w = rng.uniform(-1, 1) * canvas.half_width, rng.uniform(0.01, 0.12)
        picture = blend(picture, colour(rng, 0.02, 0.5, 0.5), canvas.box(x, -9, x + w, 9, rng.normal(0, 0.08)))
    return picture


def flying(canvas, rng):
    """One thing before nothing but sky."""
    picture = sky_only(canvas, rng)
    x, y = rng.uniform(-0.4, 0.4), rng.uniform(-0.3, 0.3)
    for _ in range(rng.integers(1, 4)):
        mask = canvas.ellipse(x, y, rng.uniform(0.02, 0.35), rng.uniform(0.02, 0.15), rng.uniform(0, 3))
        picture = blend(picture, colour(rng, 0, 1, 0.6), mask)
    return picture


WITHOUT = [texture, sky_only, ground_only, close_up, portrait, animal, indoors, facade, still_life, shapes, bands,
           forest, flying, background]


def develop(canvas, rng, picture):
    """What cameras add: contrast, tint, shading, blur, noise."""
    picture = np.clip(picture, 0, 1) ** rng.uniform(0.7, 1.5)
    if rng.random() < 0.12:
        picture = np.repeat(picture.mean(axis=2, keepdims=True), 3, axis=2)
    picture = picture * rng.uniform(0.85, 1.15, 3) * rng.uniform(0.7, 1.1)
    radius = (canvas.x / canvas.half_width) ** 2 + (canvas.y / canvas.half_height) ** 2
    picture = picture * (1 - rng.uniform(0, 0.35) * radius / 2)[..., None]
    for _ in range(rng.integers(0, 3)):
        picture[1:-1] = (picture[:-2] + 2 * picture[1:-1] + picture[2:]) / 4
        picture[:, 1:-1] = (picture[:, :-2] + 2 * picture[:, 1:-1] + picture[:, 2:]) / 4
    picture = picture + rng.standard_normal(picture.shape, np.float32) * np.float32(rng.uniform(0, 0.03))
    return np.clip(picture, 0, 1).astype(np.float32)


def make_scene(rng, height, width, has_horizon):
    canvas = Canvas(rng, height, width)
    draw = with_horizon if has_horizon else WITHOUT[rng.integers(len(WITHOUT))]
    return develop(canvas, rng, draw(canvas, rng))
