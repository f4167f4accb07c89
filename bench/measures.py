"""Measures taken in turns, so that what else the machine does falls on all of them alike."""
import statistics
import subprocess


def run(*words, **options):
    return subprocess.run([str(word) for word in words], check=True, capture_output=True, **options).stdout


def medians(rounds, measures):
    """Of each measure, in turns; a measure is a function that answers seconds."""
    times = {name: [] for name in measures}
    for _ in range(rounds):
        for name, measure in measures.items():
            times[name].append(measure())
    return {name: statistics.median(values) for name, values in times.items()}
