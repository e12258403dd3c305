#!/usr/bin/env python3
"""Makes the framework headers and link stubs of sdk/macos: generate.py BINDINGS [TARGET].

What is declared: sdk/wants.txt, and the types that this needs. What no binding carries is taken from
sdk/by-hand/. TARGET/sources.txt names for each entry where it comes from.
"""
import glob
import os
import re
import sys

import bindings
import ctypes_of

HERE = os.path.dirname(os.path.abspath(__file__))
ROOT = os.path.dirname(HERE)
# Names that Darwin's own headers, the compiler or sdk/by-hand/ declare.
GIVEN = set('''void _Bool char short int long unsigned signed float double bool const struct enum union id
instancetype SEL Class BOOL Boolean NSInteger NSUInteger CGFloat size_t int8_t int16_t int32_t int64_t
uint8_t uint16_t uint32_t uint64_t uintptr_t OSStatus OSType FourCharCode UInt8 UInt16 UInt32 UInt64
SInt16 SInt32 SInt64 Float32 Float64 dispatch_queue_t dispatch_block_t NSObject pid_t mach_port_t
kern_return_t _Nullable _Nonnull _Null_unspecified __kindof volatile restrict __unsafe_unretained
__strong __weak __autoreleasing NSZone'''.split())
for _hand in glob.glob(os.path.join(ROOT, 'by-hand', '*.h')):
    with open(_hand, encoding='utf-8') as _file:
        for _names in re.findall(r'^// names: (.*)$', _file.read(), re.M):
            GIVEN |= set(_names.split())
CRATES = {'IOKit': 'objc2-io-kit', 'AudioToolbox': 'objc2-audio-toolbox', 'CoreAudioTypes':
          'objc2-core-audio-types', 'CoreFoundation': 'objc2-core-foundation'}
# Where a framework's own header is not called like it.
HEADER = {'IOKit': 'IOKitLib'}
BINARY = {'HIServices': 'ApplicationServices', 'CoreAudioTypes': None}


class Header:
    def __init__(self):
        self.classes, self.plain, self.interfaces, self.uses = set(), [], [], set()
        self.protocols, self.symbols, self.objects = set(), set(), set()


class Generator:
    def __init__(self, folder):
        self.pyobjc = bindings.PyObjC(folder)
        self.crates = bindings.Crates(folder)
        self.npm = bindings.NativeScript(folder)
        self.headers = {name: Header() for name in bindings.FRAMEWORKS}
        self.home, self.sources, self.problems, self.hidden = {}, {}, [], set()
        self.references = {}  # struct behind a reference -> the name of the reference type
        for framework in self.pyobjc.order:
            for name, kind in self.pyobjc.frameworks[framework].get('typedefs', {}).items():
                found = re.fullmatch(r'(const )?struct (\w+) \*', kind)
                if found and name.endswith('Ref') and 'Mutable' not in name:
                    self.references.setdefault(found.group(2), name)

    # -- where things are declared

    def framework_of(self, name, pyobjc_framework):
        crate = self.crates.where.get(name, '')
        for framework, prefix in CRATES.items():
            if pyobjc_framework is None and crate == prefix:
                return framework
        return pyobjc_framework if pyobjc_framework in self.headers else None

    def note(self, name, framework, *sources):
        self.home[name] = framework
        found = [s for s in sources if s]
        if name in self.npm.names:
            found.append('NativeScript ' + self.npm.names[name])
        self.sources[f'{framework} {name}'] = found

    def crate_source(self, name):
        return self.crates.where.get(name)

    def emit(self, framework, text):
        self.headers[framework].plain.append(text)

    def problem(self, text):
        self.problems.append(text)

    # -- types

    def is_reference(self, name):
        return self.pyobjc.look('typedefs', name + 'Ref')[0] is not None

    def use(self, kind, framework):
        """Sees to it that every name in a C type is declared, in whichever framework has it."""
        for name in re.findall(r'[A-Za-z_]\w*', re.sub(r'struct (\w+)', r'\1', kind)):
            if name in GIVEN or name in self.hidden:
                continue
            if name not in self.home:
                self.declare_type(name, framework, 'struct ' + name in kind)
            home = self.home.get(name)
            if home and home != framework:
                self.headers[framework].uses.add(home)

    def declare_type(self, name, user, is_tag):
        framework, kind = self.pyobjc.look('typedefs', name, user)
        if self.pyobjc.look('enum_type', name)[0]:
            return self.declare_enum(name)
        where, record = self.pyobjc.look('structs', name)
        if record:
            return self.declare_struct(name, self.framework_of(name, where) or user,
                                       list(zip(record['fieldnames'], ctypes_of.fields(record['typestr']))),
                                       f'PyObjC {where}')
        if name in self.crates.structs:
            types = [(n, ctypes_of.rust(t, self.is_reference)) for n, t in self.crates.structs[name]]
            return self.declare_struct(name, self.framework_of(name, None) or user, types, None)
        if kind:
            return self.declare_typedef(name, self.framework_of(name, framework) or user, kind,
                                        f'PyObjC {framework}')
        for table in ('classes', 'formal_protocols'):
            framework, _ = self.pyobjc.look(table, name)
            if framework:
                return self.forward(name, user, table)
        if is_tag:
            self.hidden.add(name)
            return None
        if name in self.crates.types:
            return self.declare_typedef(name, self.framework_of(name, None) or user,
                                        ctypes_of.rust(self.crates.types[name], self.is_reference), None)
        if 'Opaque' in name:
            self.hidden.add(name)
            return self.emit(user, f'typedef struct {name} {name};')
        self.hidden.add(name)
        return self.problem(f'no type {name}')

    def forward(self, name, user, table):
        header = self.headers[user]
        (header.classes if table == 'classes' else header.protocols).add(name)

    def declare_typedef(self, name, framework, kind, source):
        self.note(name, framework, source, self.crate_source(name))
        self.use(kind, framework)
        for mark in ('(^)', '(*)'):
            if mark in kind:
                return self.emit(framework, 'typedef ' + kind.replace(mark, f'{mark[:2]}{name})', 1) + ';')
        kind, count = (kind.split('[') + [''])[:2]
        return self.emit(framework, f'typedef {kind} {name}' + (f'[{count}' if count else '') + ';')

    def declare_struct(self, name, framework, members, source):
        self.note(name, framework, source, self.crate_source(name))
        lines = []
        for member, kind in members:
            self.use(kind, framework)
            base, count = (kind.split('[') + [''])[:2]
            lines.append(f'  {base} {member}' + (f'[{count}' if count else '') + ';')
        self.emit(framework, f'typedef struct {name} {{\n' + '\n'.join(lines) + f'\n}} {name};')

    def declare_enum(self, name):
        where, record = self.pyobjc.look('enum_type', name)
        framework = self.framework_of(name, where)
        kind = ctypes_of.ENCODED[record['type']]
        values = self.pyobjc.enumerators(where, name)
        self.note(name, framework, f'PyObjC {where}', self.crate_source(name))
        for member in values:
            self.note(member, framework, f'PyObjC {where}', self.crate_source(member))
        body = ',\n'.join(f'  {k} = {v}' for k, v in sorted(values.items(), key=lambda kv: kv[1]))
        # As Apple's macros declare them: in C++ a set of flags converts to and from its number.
        self.emit(framework, f'typedef enum {name} : {kind} {name};\nenum {name} : {kind} {{\n{body}\n}};')

    # -- functions and constants

    def result_of(self, name, record):
        """The bindings' encoding has no typedef names, the crates have them."""
        typestr = record['retval'].get('typestr', 'v')
        kind = record['retval'].get('type_name')
        if kind:
            return kind
        crate = self.crates.functions.get(name, ((), ''))[1]
        counted = re.search(r'(?:CFRetained<|NonNull<|&)(\w+)', crate)
        if counted and self.is_reference(counted.group(1)):
            return counted.group(1) + 'Ref'
        reference = re.fullmatch(r'r?\^r?\{(\w+)=.*\}', typestr)
        if reference:
            return self.references.get(reference.group(1), f'struct {reference.group(1)} *')
        if typestr == '@':
            return 'CFTypeRef'
        if re.fullmatch(r'[A-Z]\w+', crate) and (
                crate in self.crates.types or self.pyobjc.look('enum_type', crate)[0]):
            return crate
        if crate == 'usize':
            return 'size_t'
        kind = ctypes_of.encoded(typestr)[0]
        return 'const ' + kind if crate.startswith('*const') and not kind.startswith('const') else kind

    def function(self, name):
        where, record = self.pyobjc.look('functions', name)
        source, variadic = None, ''
        if record:
            result = self.result_of(name, record)
            args = [(a.get('name') or '', plain(a.get('type_name') or ctypes_of.encoded(a['typestr'])[0]))
                    for a in record['args'] if a.get('typestr') != 'v']
            variadic = ', ...' if record.get('variadic') and args else ''
            source, since = f'PyObjC {where}', record.get('introduced')
        elif name in self.crates.functions:
            types, result = self.crates.functions[name]
            args = [('', ctypes_of.rust(t, self.is_reference)) for t in types]
            result, since = ctypes_of.rust(result, self.is_reference), None
        else:
            return self.problem(f'no function {name}')
        framework = self.framework_of(name, where)
        self.note(name, framework, source, self.crate_source(name) if name in self.crates.functions else None)
        for kind in [result] + [t for _, t in args]:
            self.use(kind, framework)
        text = ', '.join(self.named(t, n) for n, t in args) or 'void'
        self.emit(framework, f'{result} {name}({text}{variadic}){since_text(record)};')
        return self.headers[framework].symbols.add('_' + name)

    @staticmethod
    def named(kind, name):
        for mark in ('(^)', '(*)'):
            if mark in kind:
                return kind.replace(mark, f'{mark[:2]}{name})', 1)
        return f'{kind} {name}'.strip()

    def constant(self, name):
        if name in self.home:
            return None
        where, record = self.pyobjc.look('externs', name)
        if record:
            framework = self.framework_of(name, where)
            kind = record.get('type_name') or ctypes_of.encoded(record['typestr'])[0]
            self.note(name, framework, f'PyObjC {where}', self.crate_source(name))
            return self.extern(name, framework, kind, record)
        where, record = self.pyobjc.look('enum', name)
        if record and record.get('enum') and self.pyobjc.look('enum_type', record['enum'])[0]:
            return self.declare_enum(record['enum']) if record['enum'] not in self.home else None
        value = record['value'] if record else self.crates.value(name)
        if value is not None:
            framework = self.framework_of(name, where)
            if framework is None:
                return self.problem(f'no framework for {name}')
            self.note(name, framework, f'PyObjC {where}' if record else None, self.crate_source(name))
            suffix = 'u' if value > 0x7fffffff else ''
            return self.emit(framework, f'enum {{ {name} = {value}{suffix} }};')
        if name in self.crates.statics:
            framework = self.framework_of(name, None)
            self.note(name, framework, self.crate_source(name))
            kind = 'const ' + ctypes_of.rust(self.crates.statics[name], self.is_reference)
            return self.extern(name, framework, kind, None)
        return self.problem(f'no constant {name}')

    def extern(self, name, framework, kind, record):
        self.use(kind, framework)
        self.emit(framework, f'extern {kind} {name}{since_text(record)};')
        self.headers[framework].symbols.add('_' + name)

    def literal(self, name):
        where, record = self.pyobjc.look('literals', name)
        if not record:
            return self.problem(f'no literal {name}')
        framework = self.framework_of(name, where)
        self.note(name, framework, f'PyObjC {where}')
        return self.emit(framework, f'#define {name} CFSTR("{record["value"]}")')

    # -- classes

    def interface(self, name, selectors):
        table = 'classes'
        framework, record = self.pyobjc.look('classes', name)
        if not record:
            table = 'formal_protocols'
            framework, record = self.pyobjc.look('formal_protocols', name)
        if not record:
            return self.problem(f'no class {name}')
        methods = {m['selector']: m for m in self.all_methods(record, framework)}
        lines = []
        for selector in selectors:
            if selector not in methods:
                self.problem(f'no selector {name} {selector}')
                continue
            lines.append(self.method(methods[selector], framework))
            crate = self.crates.methods.get((name, selector))
            self.note(f'{name} {selector}', framework, f'PyObjC {framework}', crate and crate[2])
        body = '\n'.join(lines)
        self.note(name, framework, f'PyObjC {framework}',
                  next((c[2] for (o, _), c in self.crates.methods.items() if o == name), None))
        header = self.headers[framework]
        if table == 'formal_protocols':
            header.protocols.add(name)
            return header.interfaces.append(f'@protocol {name} <NSObject>\n@optional\n{body}\n@end')
        parent = record.get('super') or 'NSObject'
        if parent not in GIVEN and parent not in self.home:
            parent = 'NSObject'
        elif parent in self.home and self.home[parent] != framework:
            header.uses.add(self.home[parent])
        header.objects.add(name)
        header.classes.add(name)
        return header.interfaces.append(f'@interface {name} : {parent}\n{body}\n@end')

    def all_methods(self, record, framework):
        found = list(record['methods'])
        for category in record.get('categories', []):
            more = self.pyobjc.frameworks[framework]['classes'].get(category) if isinstance(category, str) else category
            found += (more or {}).get('methods', [])
        for protocol in record.get('protocols', []):
            more = self.pyobjc.look('formal_protocols', protocol)[1] or {}
            found += more.get('methods', [])
        return found + self.property_methods(record)

    @staticmethod
    def property_methods(record):
        methods = []
        for each in record.get('properties', []):
            name, kind = each['name'], each['type_name']
            getter = next((a[1] for a in each.get('attributes', []) if isinstance(a, list) and a[0] == 'getter'), name)
            common = {'class_method': 'class' in each.get('attributes', []), 'introduced': each.get('introduced')}
            methods.append({**common, 'selector': getter, 'args': [], 'retval': {'type_name': kind}})
            methods.append({**common, 'selector': f'set{name[0].upper()}{name[1:]}:',
                            'args': [{'name': name, 'type_name': kind}], 'retval': {'type_name': 'void'}})
        return methods

    def method(self, record, framework):
        result = record['retval'].get('type_name', 'void')
        self.use(result, framework)
        text = record['selector']
        if record['args']:
            parts = []
            for key, arg in zip(text.split(':'), record['args']):
                self.use(arg['type_name'], framework)
                parts.append(f'{key}:({arg["type_name"]}){arg["name"] or "value"}')
            text = ' '.join(parts)
        return f'{"+" if record["class_method"] else "-"} ({result}){text}{since_text(record)};'

    # -- the whole

    def read_wants(self):
        act = {'F': self.function, 'C': self.constant, 'L': self.literal}
        wanted = [line.split() for line in open(os.path.join(ROOT, 'wants.txt'), encoding='utf-8')]
        wanted = [w for w in wanted if w and w[0] != '#']
        for words in wanted:
            if words[0] == 'M':
                found, _ = self.pyobjc.look('classes', words[1])
                if found:
                    self.home.setdefault(words[1], found)
        for words in wanted:
            if words[0] == 'M':
                self.interface(words[1], words[2:])
            elif words[0] == 'T':
                for name in words[1:]:
                    self.use(name, 'CoreAudioTypes')
            else:
                for name in words[1:]:
                    act[words[0]](name)

    def header_text(self, framework):
        header = self.headers[framework]
        lines = ['// Made by sdk/generator/generate.py from typed bindings; sdk/macos/sources.txt names them.',
                 '#pragma once']
        hand = os.path.join(ROOT, 'by-hand', framework + '.h')
        uses = header.uses - {framework} | ({'CoreFoundation'} if framework != 'CoreFoundation' else set())
        for name in bindings.FRAMEWORKS:
            if name in uses:
                if order(name) > order(framework):
                    self.problem(f'{framework} uses {name}, which comes after it')
                lines.append(f'#import <{BINARY.get(name) or name}/{BINARY.get(name) or name}.h>')
        if os.path.exists(hand):
            lines += ['', open(hand, encoding='utf-8').read().rstrip()]
        lines.append('')
        if header.classes:
            lines.append(f'@class {", ".join(sorted(header.classes))};')
        if header.protocols:
            lines.append(f'@protocol {", ".join(sorted(header.protocols))};')
        lines += ['#ifdef __cplusplus', 'extern "C" {', '#endif', *header.plain,
                  '#ifdef __cplusplus', '}', '#endif', *header.interfaces]
        return '\n'.join(lines) + '\n'

    def stub_text(self, binary, header):
        extra = os.path.join(ROOT, 'by-hand', binary + '.symbols')
        symbols, objects = set(header.symbols), set(header.objects)
        if os.path.exists(extra):
            for line in open(extra, encoding='utf-8'):
                words = line.split('#')[0].split()
                (objects if words[:1] == ['class'] else symbols).update(words[1:] if words[:1] == ['class'] else words)
        text = ('--- !tapi-tbd\ntbd-version: 4\ntargets: [ x86_64-macos, arm64-macos ]\ninstall-name: '
                f"'/System/Library/Frameworks/{binary}.framework/Versions/A/{binary}'\n")
        if symbols or objects:
            text += 'exports:\n  - targets: [ x86_64-macos, arm64-macos ]\n'
        if symbols:
            text += '    symbols: [ ' + ',\n               '.join(sorted(symbols)) + ' ]\n'
        if objects:
            text += '    objc-classes: [ ' + ',\n                    '.join(sorted(objects)) + ' ]\n'
        return text + '...\n'

    def write(self, target):
        by_hand = {f.split('.')[0] for f in os.listdir(os.path.join(ROOT, 'by-hand')) if f.endswith('.h')}
        frameworks = list(self.headers) + sorted(by_hand - set(self.headers))
        for framework in frameworks:
            self.headers.setdefault(framework, Header())
            binary = BINARY.get(framework, framework)
            name = binary or framework
            folder = os.path.join(target, 'Frameworks', name + '.framework')
            write(os.path.join(folder, 'Headers', HEADER.get(name, name) + '.h'), self.header_text(framework))
            if binary:
                write(os.path.join(folder, name + '.tbd'), self.stub_text(binary, self.headers[framework]))
        lines = [f'{name}: {"; ".join(s)}' for name, s in sorted(self.sources.items())]
        write(os.path.join(target, 'sources.txt'), '\n'.join(lines) + '\n')


def order(framework):
    names = bindings.FRAMEWORKS
    return names.index(framework) if framework in names else len(names)


def plain(kind):
    return re.sub(r'\b_Bool\b', 'bool', kind)


def since_text(record):
    record = record or {}
    parts = [f'{key}={record[key]}' for key in ('introduced', 'deprecated') if record.get(key)]
    return f' __attribute__((availability(macos,{",".join(parts)})))' if parts else ''


def write(path, text):
    os.makedirs(os.path.dirname(path), exist_ok=True)
    with open(path, 'w', encoding='utf-8') as file:
        file.write(text)


def main():
    generator = Generator(sys.argv[1])
    generator.read_wants()
    generator.write(sys.argv[2] if len(sys.argv) > 2 else os.path.join(ROOT, 'macos'))
    for text in generator.problems:
        print(text, file=sys.stderr)
    print(f'{len(generator.sources)} names declared, {len(generator.problems)} problems')
    return 1 if generator.problems else 0


if __name__ == '__main__':
    sys.exit(main())
