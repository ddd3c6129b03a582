"""The selection behind the engineering extremes, with its exact movements, on lists of floats."""
import math


def ascending(a, b):
    return a < b


def descending(a, b):
    return a > b


def _median(v, a, b, c, before):
    if before(v[b], v[a]):
        v[a], v[b] = v[b], v[a]
    if before(v[c], v[b]):
        v[b], v[c] = v[c], v[b]
        if before(v[b], v[a]):
            v[a], v[b] = v[b], v[a]


def _partition(v, first, last, before):
    """Returns the run of equals [pb, pe)."""
    n = last - first
    mid, tail = first + n // 2, last - 1
    if n <= 41:
        _median(v, first, mid, tail, before)
    else:
        s = n // 8
        _median(v, first, first + s, first + 2 * s, before)
        _median(v, mid - s, mid, mid + s, before)
        _median(v, tail - 2 * s, tail - s, tail, before)
        _median(v, first + s, mid, tail - s, before)

    def same(a, b):
        return not before(a, b) and not before(b, a)

    pb, pe = mid, mid + 1
    while pb > first and same(v[pb - 1], v[pb]):
        pb -= 1
    while pe < last and same(v[pe], v[pb]):
        pe += 1
    up, down = pe, pb
    while True:
        while up < last:
            if before(v[pb], v[up]):
                pass
            elif before(v[up], v[pb]):
                break
            else:
                if pe != up:
                    v[pe], v[up] = v[up], v[pe]
                pe += 1
            up += 1
        while down > first:
            if before(v[down - 1], v[pb]):
                pass
            elif before(v[pb], v[down - 1]):
                break
            else:
                pb -= 1
                if pb != down - 1:
                    v[pb], v[down - 1] = v[down - 1], v[pb]
            down -= 1
        if up == last and down == first:
            return pb, pe
        if down == first:
            if pe != up:
                v[pb], v[pe] = v[pe], v[pb]
            pe += 1
            v[pb], v[up] = v[up], v[pb]
            pb += 1
            up += 1
        elif up == last:
            down -= 1
            pb -= 1
            if down != pb:
                v[down], v[pb] = v[pb], v[down]
            pe -= 1
            v[pb], v[pe] = v[pe], v[pb]
        else:
            down -= 1
            v[up], v[down] = v[down], v[up]
            up += 1


def select(v, target, before):
    """Reorders `v` so that position `target` holds what a full sort would put there."""
    first, last = 0, len(v)
    while last - first > 32:
        pb, pe = _partition(v, first, last, before)
        if pe <= target:
            first = pe
        elif pb <= target:
            return
        else:
            last = pb
    for i in range(first + 1, last):
        value = v[i]
        if before(value, v[first]):
            del v[i]
            v.insert(first, value)
        else:
            at = i
            while before(value, v[at - 1]):
                at -= 1
            del v[i]
            v.insert(at, value)


def position(count, percentage):
    """The k of a percentage: truncated, within 0..count; 0 where it is not a number."""
    share = count * percentage / 100.0
    if math.isnan(share):
        return 0
    return int(min(max(share, 0.0), float(count)))


def engineering_extreme(v, percentage, before):
    """Reorders `v` and returns the value that is read beside the selected one."""
    k = position(len(v), percentage)
    select(v, k, before)
    return v[k - 1] if k > 0 else v[0]
