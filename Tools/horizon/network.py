"""A small convolutional classifier and its training, in numpy alone.

Pictures are float32, pictures x height x width x 3, (level - 127.5) / 127.5. The network takes any size: convolutions,
each followed by max(0, x), then the mean and the largest value of each channel over the whole picture, and a linear
layer to two scores.
"""

import numpy as np

# Output channels, kernel side, stride.
LAYERS = [(8, 3, 2), (16, 3, 2), (16, 3, 1), (24, 3, 2), (32, 3, 1), (32, 3, 2), (40, 3, 1)]


def make_network(rng):
    """Weights by He et al., "Delving Deep into Rectifiers" (2015)."""
    parameters, channels = [], 3
    for out, side, _ in LAYERS:
        fan = channels * side * side
        parameters += [rng.normal(0, np.sqrt(2 / fan), (fan, out)), np.zeros(out)]
        channels = out
    parameters += [rng.normal(0, np.sqrt(1 / channels), (2 * channels, 2)), np.zeros(2)]
    return [p.astype(np.float32) for p in parameters]


def gather(x, side, stride):
    """The side x side neighbourhood of every stride-th pixel, zero outside, as rows of a matrix."""
    pad = side // 2
    x = np.pad(x, ((0, 0), (pad, pad), (pad, pad), (0, 0)))
    windows = np.lib.stride_tricks.sliding_window_view(x, (side, side), (1, 2))[:, ::stride, ::stride]
    count, height, width = windows.shape[:3]
    return np.ascontiguousarray(windows.transpose(0, 1, 2, 4, 5, 3)).reshape(count * height * width, -1), (
        count, height, width)


def scatter(rows, shape, grid, side, stride):
    """The transpose of gather: each row's values added to the pixels that they came from."""
    pad = side // 2
    count, height, width = grid
    rows = rows.reshape(count, height, width, side, side, shape[3])
    x = np.zeros((shape[0], shape[1] + 2 * pad, shape[2] + 2 * pad, shape[3]), np.float32)
    for i in range(side):
        for j in range(side):
            x[:, i:i + stride * height:stride, j:j + stride * width:stride] += rows[:, :, :, i, j]
    return x[:, pad:pad + shape[1], pad:pad + shape[2]]


def softmax(scores):
    raised = np.exp(scores - scores.max(axis=1, keepdims=True))
    return raised / raised.sum(axis=1, keepdims=True)


def forward(parameters, x, keep=None):
    """Probabilities of both answers. `keep` takes what the way back needs."""
    for i, (out, side, stride) in enumerate(LAYERS):
        shape = x.shape
        rows, grid = gather(x, side, stride)
        x = np.maximum(rows @ parameters[2 * i] + parameters[2 * i + 1], 0).reshape(*grid, out)
        if keep is not None:
            keep.append((rows, shape, grid, x))
    flat = x.reshape(x.shape[0], -1, x.shape[3])
    pooled = np.concatenate([flat.mean(axis=1), flat.max(axis=1)], axis=1)
    if keep is not None:
        keep.append((pooled, flat))
    return softmax(pooled @ parameters[-2] + parameters[-1])


def gradients(parameters, x, answers, smoothing=0.05):
    """The mean cross entropy and its derivative by each parameter."""
    keep = []
    found = forward(parameters, x, keep)
    count = len(answers)
    wanted = np.full((count, 2), smoothing / 2, np.float32)
    wanted[np.arange(count), answers] += 1 - smoothing
    loss = -np.sum(wanted * np.log(found + 1e-9)) / count
    result = [None] * len(parameters)
    pooled, flat = keep.pop()
    back = (found - wanted) / count
    result[-2], result[-1] = pooled.T @ back, back.sum(axis=0)
    back = back @ parameters[-2].T
    channels = flat.shape[2]
    spread = np.repeat(back[:, None, :channels] / flat.shape[1], flat.shape[1], axis=1)
    top = flat.argmax(axis=1)
    spread[np.arange(count)[:, None], top, np.arange(channels)[None]] += back[:, channels:]
    back = spread
    for i in reversed(range(len(LAYERS))):
        rows, shape, grid, x = keep.pop()
        out, side, stride = LAYERS[i]
        back = (back.reshape(x.shape) * (x > 0)).reshape(-1, out)
        result[2 * i], result[2 * i + 1] = rows.T @ back, back.sum(axis=0)
        if i > 0:
            back = scatter(back @ parameters[2 * i].T, shape, grid, side, stride)
    return loss, result


class Adam:
    """Kingma and Ba, "Adam: A Method for Stochastic Optimization" (2015), with decay of the weights."""

    def __init__(self, parameters):
        self.first = [np.zeros_like(p) for p in parameters]
        self.second = [np.zeros_like(p) for p in parameters]
        self.steps = 0

    def step(self, parameters, derivatives, rate, decay=2e-4):
        self.steps += 1
        for p, d, m, v in zip(parameters, derivatives, self.first, self.second):
            m += 0.1 * (d - m)
            v += 0.001 * (d * d - v)
            mean, spread = m / (1 - 0.9**self.steps), v / (1 - 0.999**self.steps)
            p -= rate * (mean / (np.sqrt(spread) + 1e-8) + decay * p * (p.ndim > 1))
