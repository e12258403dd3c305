#!/usr/bin/env python3
"""Compares the declarations in sdk/macos with the bindings: compare.py BINDINGS.

Fails when the committed files are not what the generator makes, when an entry has no source, or when
two sources disagree: on a constant's value, on the number of a function's arguments, or on the kind
of one of them (pointer, number of which size and sign, record of which name).
"""
import filecmp
import os
import re
import sys
import tempfile

import generate

NUMBERS = {'c': 'i8', 'B': 'bool', 'Z': 'bool', 'i': 'i32', 'I': 'u32', 's': 'i16', 'S': 'u16',
           'l': 'i64', 'L': 'u64', 'q': 'i64', 'Q': 'u64', 'f': 'f32', 'd': 'f64', 'v': 'void',
           'C': 'u8', 'z': 'u64'}
RUST = {'isize': 'i64', 'usize': 'u64', 'c_int': 'i32', 'c_uint': 'u32', 'c_long': 'i64',
        'c_ulong': 'u64', 'c_longlong': 'i64', 'c_ulonglong': 'u64', 'c_double': 'f64',
        'c_float': 'f32', 'c_void': 'void', '()': 'void', 'NSInteger': 'i64', 'NSUInteger': 'u64',
        'CGFloat': 'f64', 'Boolean': 'bool', 'c_char': 'i8', 'libc::pid_t': 'i32',
        'libc::boolean_t': 'i32', 'OSStatus': 'i32', 'libc::mach_port_t': 'u32',
        'libc::kern_return_t': 'i32', 'OSType': 'u32', 'FourCharCode': 'u32'}
RECORDS = {'_NSRange': 'NSRange', 'NSPoint': 'CGPoint', 'NSRect': 'CGRect', 'NSSize': 'CGSize'}
PLAIN = {'i8', 'u8', 'i16', 'u16', 'i32', 'u32', 'i64', 'u64', 'f32', 'f64', 'bool', 'void'}


def kind_of_encoding(typestr):
    typestr = typestr.lstrip('rnNoORV')
    if typestr[0] in '^@*#:':
        return 'pointer'
    if typestr[0] == '{':
        name = typestr[1:].split('=')[0]
        return 'record ' + RECORDS.get(name, name)
    return NUMBERS[typestr[0]]


def kind_of_rust(text, crates, depth=0):
    text = text.strip()
    if text in PLAIN:
        return text
    if text in RUST:
        return RUST[text]
    if re.match(r'(&|\*|Option<|NonNull<|Retained<|CFRetained<|dispatch2::)', text) or ' fn(' in text or 'Block<' in text:
        return 'pointer'
    name = text.split('::')[-1]
    if name in crates.kinds and depth < 8:
        return kind_of_rust(crates.kinds[name], crates, depth + 1)
    return 'record ' + RECORDS.get(name, name)


class Comparison:
    def __init__(self, folder):
        self.generator = generate.Generator(folder)
        with tempfile.TemporaryDirectory() as target:
            self.generator.read_wants()
            self.generator.write(target)
            self.failures = list(self.generator.problems) + self.differences(target)
        self.counts = {}

    @staticmethod
    def differences(target):
        committed, found = os.path.join(generate.ROOT, 'macos'), []
        for folder, _, files in os.walk(target):
            for name in files:
                made = os.path.join(folder, name)
                kept = os.path.join(committed, os.path.relpath(made, target))
                if not os.path.exists(kept) or not filecmp.cmp(made, kept, shallow=False):
                    found.append(f'{kept} is not what the generator makes')
        return found

    def count(self, what):
        self.counts[what] = self.counts.get(what, 0) + 1

    def sources(self):
        for entry, sources in self.generator.sources.items():
            self.count('entries')
            if not sources:
                self.failures.append(f'{entry} has no source')
            self.count(f'entries with {min(len(sources), 3)} source(s)')

    def kinds(self, name, ours, theirs):
        if len(ours) != len(theirs):
            self.failures.append(f'{name}: {len(ours)} types, the crates have {len(theirs)}')
            return
        for mine, other in zip(ours, theirs):
            if mine != other:
                self.failures.append(f'{name}: {mine}, the crates have {other}')

    def function(self, name):
        _, record = self.generator.pyobjc.look('functions', name)
        if record is None or name not in self.generator.crates.functions:
            self.count('functions with one source')
            return
        types, result = self.generator.crates.functions[name]
        theirs = [kind_of_rust(t, self.generator.crates) for t in types + [result]]
        args = [a for a in record['args'] if a['typestr'] != 'v'] + [record['retval']]
        self.kinds(name, [kind_of_encoding(a.get('typestr', 'v')) for a in args], theirs)
        self.count('functions compared')

    def method(self, owner, selector):
        _, record = self.generator.pyobjc.look('classes', owner)
        if record is None:
            _, record = self.generator.pyobjc.look('formal_protocols', owner)
        framework, _ = self.generator.pyobjc.look('classes', owner)
        crate = self.generator.crates.methods.get((owner, selector))
        if crate is None:
            self.count('methods with one source')
            return
        method = next(m for m in self.generator.all_methods(record, framework)
                      if m['selector'] == selector)
        types = [a for a in crate[0] if not a.startswith('MainThreadMarker')]
        # The last argument of a call that may fail is the error in C and the result in Rust.
        ours = [kind_of_encoding(a['typestr']) for a in method['args'] if 'typestr' in a]
        if 'Result<' in crate[1]:
            ours = ours[:-1]
        if any('typestr' not in a for a in method['args']):
            self.count('methods compared by their number of arguments')
            self.kinds(f'{owner} {selector}', ['?'] * len(method['args']), ['?'] * len(types))
            return
        self.kinds(f'{owner} {selector}', ours, [kind_of_rust(t, self.generator.crates) for t in types])
        self.count('methods compared')

    def constant(self, name):
        _, record = self.generator.pyobjc.look('enum', name)
        if record is None:
            return
        value = self.generator.crates.value(name)
        if value is None:
            self.count('constants with one source')
            return
        if (value - record['value']) % (1 << 32):
            self.failures.append(f'{name} is {record["value"]}, the crates have {value}')
        self.count('constants compared')

    def run(self):
        self.sources()
        for entry in self.generator.sources:
            words = entry.split()
            if len(words) == 3:
                self.method(words[1], words[2])
            elif '_' + words[1] in self.generator.headers[words[0]].symbols:
                self.function(words[1]) if self.generator.pyobjc.look('externs', words[1])[0] is None else None
            else:
                self.constant(words[1])
        for what in sorted(self.counts):
            print(f'{self.counts[what]:4} {what}')
        for failure in self.failures:
            print(failure, file=sys.stderr)
        return 1 if self.failures else 0


if __name__ == '__main__':
    sys.exit(Comparison(sys.argv[1]).run())
