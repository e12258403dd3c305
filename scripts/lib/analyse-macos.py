#!/usr/bin/env python3
"""Runs clang's static analyser over the platform's Objective-C++: analyse-macos.py BUILD CACHE.

BUILD has compile_commands.json. A file whose text after preprocessing was without a finding is not
looked at again; CACHE keeps what such texts hash to.
"""
import concurrent.futures
import hashlib
import json
import os
import shlex
import subprocess
import sys

CHECKERS = ('core,cplusplus,deadcode,nullability,osx,security,unix,'
            'optin.osx.OSObjectCStyleCast,optin.performance.GCDAntipattern')


def commands(folder):
    with open(os.path.join(folder, 'compile_commands.json'), encoding='utf-8') as file:
        for entry in json.load(file):
            if not entry['file'].endswith('.mm'):
                continue
            words = shlex.split(entry['command'])
            if os.path.basename(words[0]) == 'ccache':
                words = words[1:]
            yield entry['file'], entry['directory'], words[:words.index('-o')] + [entry['file']]


def analyse(source, directory, command, cache):
    text = subprocess.run(command + ['-E', '-P', '-o', '-'], cwd=directory, capture_output=True, check=True)
    stamp = os.path.join(cache, hashlib.sha256(text.stdout + CHECKERS.encode()).hexdigest())
    if os.path.exists(stamp):
        return ''
    found = subprocess.run(
        command + ['--analyze', '-Xclang', f'-analyzer-checker={CHECKERS}', '-Xclang', '-analyzer-werror',
                   '-Xclang', '-analyzer-output=text', '-o', os.devnull],
        cwd=directory, capture_output=True, text=True, check=False)
    if found.returncode == 0:
        open(stamp, 'w', encoding='utf-8').close()
        return ''
    return found.stderr or f'{source}: the analyser failed'


def main(folder, cache):
    os.makedirs(cache, exist_ok=True)
    jobs = list(commands(folder))
    with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
        findings = [text for text in pool.map(lambda job: analyse(*job, cache), jobs) if text]
    print(''.join(findings), file=sys.stderr, end='')
    print(f'{len(jobs)} files analysed, {len(findings)} with findings')
    return 1 if findings or not jobs else 0


if __name__ == '__main__':
    sys.exit(main(*sys.argv[1:3]))
