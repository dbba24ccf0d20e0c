#!/usr/bin/env python3
"""The redwood meshes computed without the C++ code against the CRC-32s pinned in
tests/support/redwood_checksums.h: PNG decoded with zlib, numpy float32 with one rounding per
operation (numpy never fuses a multiply and an add). On a mismatch it prints the right table."""
import os, re, struct, sys, zlib
import numpy as np

ROOT, F32 = os.path.join(os.path.dirname(os.path.abspath(__file__)), '..', '..'), np.float32


def depth_millimetres(index):
    data = open(os.path.join(ROOT, 'examples/redwood/depth/%05d.png' % index), 'rb').read()
    pos, idat = 8, b''
    while pos < len(data):
        size, kind = struct.unpack('>I4s', data[pos:pos + 8])
        if kind == b'IHDR':
            width, height, *form = struct.unpack('>IIBBBBB', data[pos + 8:pos + 21])
            assert (form[0], form[1], form[4]) == (16, 0, 0)  # 16-bit grayscale, not interlaced
        idat += data[pos + 8:pos + 8 + size] if kind == b'IDAT' else b''
        pos += 12 + size
    raw = np.frombuffer(zlib.decompress(idat), np.uint8).reshape(height, 1 + 2 * width)
    rows, prior = np.zeros((height, 2 * width), np.uint8), np.zeros(2 * width, np.uint8)
    for y in range(height):
        kind, line = raw[y, 0], raw[y, 1:].copy()
        if kind == 1:  # each byte plus the same byte of the sample to its left, mod 256
            line = np.cumsum(line.reshape(width, 2), axis=0, dtype=np.uint8).reshape(-1)
        elif kind == 2:
            line += prior
        elif kind in (3, 4):
            cur, up = line.tolist(), prior.tolist()
            for i in range(len(cur)):
                a, b, c = (cur[i - 2], up[i], up[i - 2]) if i >= 2 else (0, up[i], 0)
                pa, pb, pc = abs(b - c), abs(a - c), abs(a + b - 2 * c)
                paeth = a if pa <= pb and pa <= pc else b if pb <= pc else c
                cur[i] = (cur[i] + ((a + b) // 2 if kind == 3 else paeth)) & 255
            line = np.array(cur, np.uint8)
        rows[y], prior = line, line
    return np.minimum((rows[:, 0::2].astype(np.int32) << 8) | rows[:, 1::2], 32767)


def flat_mesh(depth, level, reset):
    step = level + 1
    z = depth[::step, ::step]
    ny, nx = z.shape
    z = np.where(z < 10, 32001, z).astype(F32)
    u, v = (np.arange(nx) * step).astype(F32)[None, :], (np.arange(ny) * step).astype(F32)[:, None]
    x = ((u - F32(319.5)) * (z / F32(525))) / F32(1000)  # fx = fy = 525, cx = 319.5, cy = 239.5
    y = ((v - F32(239.5)) * (z / F32(525))) / F32(1000)
    zm = z / F32(1000)
    b = (np.arange(ny - 1)[:, None] * nx + np.arange(nx - 1)[None, :]).astype(np.int32)
    cells = np.stack([b, b + 1, b + nx, b + 1, b + nx + 1, b + nx], axis=-1)
    if reset:
        dA, dB = np.abs(zm[:-1, :-1] - zm[1:, 1:]), np.abs(zm[:-1, 1:] - zm[1:, :-1])
        other = ~(dA > dB + F32(0.05)) & (dA + F32(0.05) < dB)
        cells[..., 2] = np.where(other, b + nx + 1, b + nx)
        cells[..., 3] = np.where(other, b, b + 1)
    return (struct.pack('<i', nx * ny) + np.stack([x, y, zm], axis=-1).astype('<f4').tobytes()
            + struct.pack('<i', cells.size // 3) + cells.astype('<i4').tobytes() + bytes([reset]))


def main():
    text = open(os.path.join(ROOT, 'tests/support/redwood_checksums.h')).read()
    table = text[text.index('kRedwoodMeshCrc32'):]
    pinned = [int(crc, 16) for crc in re.findall(r'(0x[0-9a-f]{8})u', table[:table.index(';')])]
    depths = map(depth_millimetres, range(5))
    computed = [zlib.crc32(flat_mesh(depth, level, reset)) for depth in depths
                for level in (0, 2, 5) for reset in (False, True)]
    if pinned != computed:  # the table as it should read, frame by frame
        row = '{{0x%08xu, 0x%08xu}, {0x%08xu, 0x%08xu}, {0x%08xu, 0x%08xu}},'
        print('\n'.join(row % tuple(computed[i:i + 6]) for i in range(0, 30, 6)))
        return 1
    print('all %d pinned meshes agree' % len(pinned))
    return 0


if __name__ == '__main__':
    sys.exit(main())
