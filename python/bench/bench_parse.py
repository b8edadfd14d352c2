"""Parse, walk and decode every leaf of each message of a folder: parcelvane against
Python's email package (policy compat32 and policy default), in one run.

    /usr/bin/python3 python/bench/bench_parse.py [FOLDER] [--rounds N]

FOLDER defaults to ../shared/corpus beside the repository. Each contender runs over
every message N times (best of 5 runs is reported); the figures are messages and
megabytes per second and the speed-up of parcelvane over each policy.
"""

import argparse
import email
import email.policy
import os
import sys
import time

HERE = os.path.dirname(os.path.abspath(__file__))
ROOT = os.path.dirname(os.path.dirname(HERE))

import parcelvane  # noqa: E402


def load(folder):
    messages = []
    for name in sorted(os.listdir(folder)):
        path = os.path.join(folder, name)
        if os.path.isfile(path) and name.endswith(".eml"):
            with open(path, "rb") as f:
                messages.append(f.read())
    return messages


def run_parcelvane(messages):
    total = 0
    for raw in messages:
        try:
            msg = parcelvane.parse(raw)
        except ValueError:
            continue
        for part in msg.walk():
            if not part.is_multipart:
                total += len(part.decoded())
    return total


def email_runner(policy):
    def run(messages):
        total = 0
        for raw in messages:
            msg = email.message_from_bytes(raw, policy=policy)
            for part in msg.walk():
                if not part.is_multipart():
                    payload = part.get_payload(decode=True)
                    total += len(payload or b"")
        return total

    return run


def timed(run, messages, rounds, repeats=5):
    best = float("inf")
    result = None
    for _ in range(repeats):
        start = time.perf_counter()
        for _ in range(rounds):
            result = run(messages)
        best = min(best, time.perf_counter() - start)
    return best / rounds, result


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("folder", nargs="?", default=os.path.join(ROOT, "..", "shared", "corpus"))
    parser.add_argument("--rounds", type=int, default=5)
    args = parser.parse_args()
    if not os.path.isdir(args.folder):
        sys.exit(f"bench_parse: no folder {args.folder}")
    messages = load(args.folder)
    size = sum(len(m) for m in messages)
    print(f"{len(messages)} messages, {size / 1e6:.2f} MB, Python {sys.version.split()[0]}, "
          f"load average {os.getloadavg()[0]:.2f}")
    contenders = [
        ("parcelvane.parse + walk + decoded()", run_parcelvane),
        ("email compat32 + walk + get_payload(decode=True)", email_runner(email.policy.compat32)),
        ("email default + walk + get_payload(decode=True)", email_runner(email.policy.default)),
    ]
    times = {}
    for name, run in contenders:
        seconds, decoded = timed(run, messages, args.rounds)
        times[name] = seconds
        print(f"{name:52s} {seconds * 1e3:8.2f} ms  {len(messages) / seconds:9.0f} msg/s  "
              f"{size / seconds / 1e6:7.1f} MB/s  ({decoded} bytes decoded)")
    ours = times[contenders[0][0]]
    print(f"speed-up over compat32: {times[contenders[1][0]] / ours:.1f}x (target 5x)")
    print(f"speed-up over default:  {times[contenders[2][0]] / ours:.1f}x (target 15x)")


if __name__ == "__main__":
    main()
