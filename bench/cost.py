"""What commands cost."""

import os
import resource
import time


def cost_of(encode):
    """What a function takes that runs commands: seconds on the clock, seconds of the processor, and
    KiB of its largest process. It runs in a process of its own, whose children alone count."""
    reader, writer = os.pipe()
    start = time.perf_counter()
    if os.fork() == 0:
        try:
            seconds = encode()
            peak = resource.getrusage(resource.RUSAGE_CHILDREN).ru_maxrss
            os.write(writer, f"{seconds} {peak}".encode())
        finally:
            os._exit(0)
    os.wait()
    clock = time.perf_counter() - start
    os.close(writer)
    with open(reader) as pipe:
        seconds, peak = map(float, pipe.read().split())
    return clock, seconds, peak
