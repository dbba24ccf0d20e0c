#!/usr/bin/env python3
"""Recomputes kRedwoodFrame0Flat*Fnv1a64 (tests/support/redwood_checksums.h)
without the C++ code: run `python3 tests/mesh/redwood_checksums_check.py` (about 10 s)."""
# PNG decoded with zlib, the conversion rule of tests/support/redwood_frame.h,
# and Part 2.1 with float32 arithmetic emulated through struct.
import math, os, struct, zlib
data = open(os.path.join(os.path.dirname(os.path.abspath(__file__)), '..', '..', 'examples', 'redwood', 'depth', '00000.png'), 'rb').read()
assert data[:8] == b'\x89PNG\r\n\x1a\n'
pos = 8; idat = b''
while pos < len(data):
    n, = struct.unpack('>I', data[pos:pos+4]); t = data[pos+4:pos+8]; body = data[pos+8:pos+8+n]; pos += 12+n
    if t == b'IHDR': w,h,bd,ct,cm,fm,il = struct.unpack('>IIBBBBB', body)
    if t == b'IDAT': idat += body
assert (bd, ct, il) == (16, 0, 0), (bd, ct, il)
raw = zlib.decompress(idat); bpp = 2; stride = w*2
rows = []; prev = bytearray(stride); p = 0
for y in range(h):
    f = raw[p]; line = bytearray(raw[p+1:p+1+stride]); p += 1+stride
    for i in range(stride):
        a = line[i-bpp] if i >= bpp else 0; b = prev[i]; c = prev[i-bpp] if i >= bpp else 0
        if f == 1: line[i] = (line[i] + a) & 255
        elif f == 2: line[i] = (line[i] + b) & 255
        elif f == 3: line[i] = (line[i] + (a+b)//2) & 255
        elif f == 4:
            pp = a+b-c; pa, pb, pc = abs(pp-a), abs(pp-b), abs(pp-c)
            pr = a if pa <= pb and pa <= pc else (b if pb <= pc else c)
            line[i] = (line[i] + pr) & 255
    rows.append(bytes(line)); prev = line
def rnd(x): return math.floor(abs(x)+0.5)*(1 if x >= 0 else -1)
Z = []
for y in range(h):
    for x in range(w):
        val = (rows[y][2*x] << 8) | rows[y][2*x+1]
        Z.append(min(max(rnd(val*1000.0/1000.0), 0), 32767))
fx = fy = 525.0; cx = 319.5; cy = 239.5
F = struct.Struct('<f')
def f32(x): return F.unpack(F.pack(x))[0]
verts = bytearray(); zs = []
for v in range(h):
    vo = f32(v - cy)
    for u in range(w):
        d = Z[v*w+u]
        if d < 10: d = 32001
        z = float(d)
        x = f32(f32(f32(u - cx) * f32(z / fx)) / 1000.0)
        yy = f32(f32(vo * f32(z / fy)) / 1000.0)
        zz = f32(z / 1000.0); zs.append(zz)
        verts += struct.pack('<fff', x, yy, zz)
nx, ny = w, h; V = nx*ny; T = 2*(nx-1)*(ny-1)
def tris(reset):
    out = []
    for j in range(ny-1):
        for i in range(nx-1):
            b = j*nx+i
            cell = [b, b+1, b+nx, b+1, b+nx+1, b+nx]
            if reset:
                dA = f32(abs(f32(zs[b] - zs[b+nx+1]))); dB = f32(abs(f32(zs[b+1] - zs[b+nx])))
                if dA > f32(dB + f32(0.05)): pass
                elif f32(dA + f32(0.05)) < dB: cell = [b, b+1, b+nx+1, b, b+nx+1, b+nx]
            out.extend(cell)
    return struct.pack('<%di' % len(out), *out)
def fnv(bs):
    hsh = 14695981039346656037
    for c in bs: hsh = ((hsh ^ c) * 1099511628211) & 0xFFFFFFFFFFFFFFFF
    return hsh
for reset in (1, 0):
    flat = struct.pack('<i', V) + bytes(verts) + struct.pack('<i', T) + tris(reset) + bytes([reset])
    print('reset' if reset else 'non-reset', len(flat), hex(fnv(flat)))
