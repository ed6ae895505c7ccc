"""The chance by which a sample is drawn: another one each run, told so that a run can be had again."""
import os
import random


def add_seed(parser):
    parser.add_argument("--seed", type=int, default=os.environ.get("FAULT_SEED") or None)


def seed_of(options):
    """The seed that was given, or a new one. Printed, since what failed is found again by it."""
    seed = random.SystemRandom().randrange(1 << 32) if options.seed is None else options.seed
    print(f"seed {seed}: again with --seed {seed}, in a test run with FAULT_SEED={seed}", flush=True)
    return seed


def sample_of(points, number, seed):
    return random.Random(seed).sample(points, min(number, len(points)))
