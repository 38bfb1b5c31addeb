"""Prints from llvm-cov's export the totals of each file, then each line and branch not reached."""
import json
import os
import sys


def never_taken(file):
    """Returns how often each line ran, and how often each condition was true and false."""
    lines, branches = {}, {}
    segments = file['segments']
    for (line, _, count, has_count, _, is_gap), after in zip(segments, segments[1:]):
        # A segment ends on the line before the next segment, but contains at least its first line.
        for covered in range(line, max(line + 1, after[0])):
            if has_count and not is_gap:
                lines[covered] = max(lines.get(covered, 0), count)
    # A template has an entry for each instance; their counts are added.
    for line, column, _, _, taken, not_taken, *_ in file['branches']:
        seen = branches.setdefault((line, column), [0, 0])
        seen[0] += taken
        seen[1] += not_taken
    return lines, branches


def main():
    print(f'{"":42} {"lines":>13} {"branches":>13}')
    sums = [0, 0, 0, 0]
    gaps = []
    for file in sorted(json.load(sys.stdin)['data'][0]['files'], key=lambda f: f['filename']):
        name = os.path.relpath(file['filename'])
        lines, branches = never_taken(file)
        summary = file['summary']['lines']
        outcomes = [(where, side, count) for where, counts in branches.items()
                    for side, count in zip(('true', 'false'), counts)]
        taken = sum(count > 0 for _, _, count in outcomes)
        row = [summary['covered'], summary['count'], taken, len(outcomes)]
        sums = [a + b for a, b in zip(sums, row)]
        print('{:42} {:6}/{:<6} {:6}/{:<6}'.format(name, *row))
        source = open(file['filename']).read().split('\n')
        gaps += [(name, line, 'never run', source[line - 1].strip())
                 for line, count in sorted(lines.items()) if count == 0]
        gaps += [(name, where[0], f'never {side}', source[where[0] - 1].strip())
                 for where, side, count in sorted(outcomes) if count == 0]
    print('{:42} {:6}/{:<6} {:6}/{:<6}'.format('', *sums))
    print(f'{100 * sums[0] / sums[1]:.1f} % of lines, {100 * sums[2] / sums[3]:.1f} % of branches')
    for gap in gaps:
        print('{}:{}: {}: {}'.format(*gap))


main()
