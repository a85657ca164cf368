"""Writes the network as an ONNX file. The format is protocol buffers; the few messages that are needed are put together
from their field numbers (onnx.proto, IR version 7, operator set 11)."""

import numpy as np

from network import LAYERS


def varint(value):
    out = bytearray()
    while value > 127:
        out.append(value & 127 | 128)
        value >>= 7
    return bytes(out) + bytes([value])


def number(field, value):
    return varint(field << 3) + varint(value)


def data(field, content):
    content = content.encode() if isinstance(content, str) else content
    return varint(field << 3 | 2) + varint(len(content)) + content


def tensor(name, array):
    dims = b"".join(number(1, n) for n in array.shape)
    return dims + number(2, 1) + data(8, name) + data(9, array.astype("<f4").tobytes())


def integers(name, values):
    return data(5, data(1, name) + b"".join(number(8, v) for v in values) + number(20, 7))


def integer(name, value):
    return data(5, data(1, name) + number(3, value) + number(20, 2))


def node(kind, inputs, output, attributes=b""):
    return b"".join(data(1, name) for name in inputs) + data(2, output) + data(3, output) + data(4, kind) + attributes


def value_info(name, dims):
    """A float tensor; sizes that may be any are given as names."""
    shape = b"".join(data(1, data(2, d) if isinstance(d, str) else number(1, d)) for d in dims)
    return data(1, name) + data(2, data(1, number(1, 1) + data(2, shape)))


def write(path, parameters, description):
    nodes, tensors, last, channels = [], [], "picture", 3
    for i, (out, side, stride) in enumerate(LAYERS):
        weights = parameters[2 * i].reshape(side, side, channels, out).transpose(3, 2, 0, 1)
        tensors += [tensor(f"weights{i}", weights), tensor(f"bias{i}", parameters[2 * i + 1])]
        attributes = (integers("kernel_shape", [side] * 2) + integers("strides", [stride] * 2) +
                      integers("pads", [side // 2] * 4))
        nodes += [node("Conv", [last, f"weights{i}", f"bias{i}"], f"conv{i}", attributes),
                  node("Relu", [f"conv{i}"], f"relu{i}")]
        last, channels = f"relu{i}", out
    nodes += [node("GlobalAveragePool", [last], "mean"), node("GlobalMaxPool", [last], "largest"),
              node("Concat", ["mean", "largest"], "both", integer("axis", 1)),
              node("Flatten", ["both"], "pooled", integer("axis", 1)),
              node("Gemm", ["pooled", "head", "head_bias"], "logits", integer("transB", 1)),
              node("Softmax", ["logits"], "scores", integer("axis", 1))]
    tensors += [tensor("head", parameters[-2].T), tensor("head_bias", parameters[-1])]
    graph = (b"".join(data(1, n) for n in nodes) + data(2, "horizon") + b"".join(data(5, t) for t in tensors) +
             data(10, description) + data(11, value_info("picture", [1, 3, "height", "width"])) +
             data(12, value_info("scores", [1, 2])))
    model = number(1, 7) + data(2, "Velnor") + data(7, graph) + data(8, number(2, 11))
    with open(path, "wb") as file:
        file.write(model)
