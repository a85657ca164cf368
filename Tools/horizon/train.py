#!/usr/bin/env python3
"""Makes Networks/horizon.onnx: a network that says whether a picture shows a horizon.

It is trained on pictures that this program draws (scenes.py) and tested on others of the same kind that it never saw.
Scores: index 0 no horizon, index 1 horizon, together 1. Needs numpy with a fast BLAS (Debian: python3-numpy,
libopenblas0-pthread). The seed is fixed; another BLAS rounds otherwise, so the file may differ in the last digits.

    Tools/horizon/train.py [--pictures 12000] [--epochs 10] [--output Networks/horizon.onnx]
"""

import argparse
import pathlib
import time

import numpy as np

import network
import onnx_file
import scenes

SHAPES = [(68, 104), (68, 104), (68, 92), (104, 68), (64, 64), (68, 120)]
BATCH = 32


def make_batches(seed, pictures):
    """Half of each batch with a horizon; bytes, as the host's pictures are."""
    rng = np.random.default_rng(seed)
    batches = []
    for i in range(pictures // BATCH):
        height, width = SHAPES[i % len(SHAPES)]
        answers = np.arange(BATCH) % 2
        drawn = np.stack([scenes.make_scene(rng, height, width, answer == 1) for answer in answers])
        batches.append(((drawn * 255 + 0.5).astype(np.uint8), answers))
    return batches


def as_input(pictures):
    return (pictures.astype(np.float32) - 127.5) / 127.5


def accuracy(parameters, batches):
    right = [(network.forward(parameters, as_input(x)).argmax(axis=1) == answers) for x, answers in batches]
    right, answers = np.concatenate(right), np.concatenate([a for _, a in batches])
    return right.mean(), right[answers == 0].mean(), right[answers == 1].mean()


def train(batches, epochs, rng):
    parameters = network.make_network(rng)
    adam, total, done = network.Adam(parameters), epochs * len(batches), 0
    for epoch in range(epochs):
        losses = []
        for i in rng.permutation(len(batches)):
            x, answers = batches[i]
            if rng.random() < 0.5:
                x = x[:, :, ::-1]
            rate = 3e-3 * min(1, (done + 1) / 50) * 0.5 * (1 + np.cos(np.pi * done / total))
            loss, derivatives = network.gradients(parameters, as_input(x), answers)
            adam.step(parameters, derivatives, np.float32(rate))
            losses.append(loss)
            done += 1
        print(f"epoch {epoch + 1}: loss {np.mean(losses):.3f}", flush=True)
    return parameters


def main():
    folder = pathlib.Path(__file__).resolve().parents[2]
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--pictures", type=int, default=12000)
    parser.add_argument("--epochs", type=int, default=10)
    parser.add_argument("--output", default=folder / "Networks" / "horizon.onnx")
    arguments = parser.parse_args()

    start = time.monotonic()
    batches = make_batches(1, arguments.pictures)
    print(f"{len(batches) * BATCH} pictures drawn in {time.monotonic() - start:.0f} s", flush=True)
    parameters = train(batches, arguments.epochs, np.random.default_rng(2))
    every, without, with_one = accuracy(parameters, make_batches(3, 1920))
    print(f"held out: {every:.1%} right; without a horizon {without:.1%}, with one {with_one:.1%}")
    pathlib.Path(arguments.output).parent.mkdir(parents=True, exist_ok=True)
    onnx_file.write(arguments.output, parameters, f"horizon or none; {every:.1%} right on held-out generated pictures")
    print(f"{arguments.output}: {pathlib.Path(arguments.output).stat().st_size} bytes; "
          f"{time.monotonic() - start:.0f} s in all")


if __name__ == "__main__":
    main()
