"""What the typed bindings say: PyObjC's metadata, the objc2 crates, NativeScript's declarations."""
import glob
import json
import os
import re

# Where a name is declared twice, the first of these frameworks counts.
FRAMEWORKS = ['CoreFoundation', 'Foundation', 'CoreGraphics', 'CoreVideo', 'CoreAudioTypes',
              'CoreMedia', 'VideoToolbox', 'ScreenCaptureKit', 'IOKit', 'Security', 'CoreAudio',
              'AudioToolbox', 'HIServices', 'QuartzCore', 'AppKit', 'AVFAudio', 'AVFoundation']


class PyObjC:
    """C types, values and the systems that a name came with."""

    def __init__(self, folder):
        self.frameworks = {}
        for path in glob.glob(os.path.join(folder, 'pyobjc', '*.json')):
            with open(path, encoding='utf-8') as file:
                text = re.sub(r'^\s*//.*$', '', file.read(), flags=re.M)
            self.frameworks[os.path.basename(path)[:-5]] = json.loads(text)['definitions']
        known = [name for name in FRAMEWORKS if name in self.frameworks]
        self.order = known + sorted(set(self.frameworks) - set(known))

    def look(self, table, name, first=None):
        """The framework and the record of a name, or (None, None)."""
        for framework in ([first] if first in self.frameworks else []) + self.order:
            record = self.frameworks[framework].get(table, {}).get(name)
            if record is not None:
                return framework, record
        return None, None

    def enumerators(self, framework, enum):
        values = self.frameworks[framework]['enum']
        return {k: v['value'] for k, v in values.items() if v.get('enum') == enum}


def _split(text):
    """The arguments of a Rust list: commas inside brackets divide nothing."""
    parts, depth, part = [], 0, ''
    for before, c in zip(' ' + text, text):
        depth += (c in '(<[{') - (c in ')]}') - (c == '>' and before != '-')
        if c == ',' and depth == 0:
            parts.append(part)
            part = ''
        else:
            part += c
    return [' '.join(p.split()) for p in parts + [part] if p.strip()]


class Crates:
    """Exact signatures and values, from the crates' own sources."""
    FUNCTION = re.compile(r'\bfn (\w+)\(([^;{]*?)\)(?:\s*->\s*([^;{]+?))?\s*;', re.S)
    STATIC = re.compile(r'pub static (\w+): ([^;]+);')
    CONSTANT = re.compile(r'pub const (\w+): ([\w:]+) =\s*([^;]+);')
    MEMBER = re.compile(r'#\[doc\(alias = "(\w+)"\)\]\s*(?:#\[[^\n]*\]\s*)*(?:pub )?const \w+'
                        r'(?:: Self)? =\s*(?:Self\()?([^;]+?)\)?;')
    TYPE = re.compile(r'pub type (\w+)(?:<[^=]*>)? =\s*([^;]+);')
    STRUCT = re.compile(r'pub struct (\w+) \{\n((?:    pub \w+: [^\n]+,\n)+)\}')
    NEWTYPE = re.compile(r'pub struct (\w+)\(pub ([^)]+)\);')
    CLASS = re.compile(r'pub (?:unsafe )?(?:struct|trait) (\w+)|^impl(?:<[^\n]*>)? (\w+)', re.M)
    METHOD = re.compile(r'method\(([\w:]+)\)\)\](?:\s*#\[[^\n]*\])*\s*(?:pub )?(?:unsafe )?'
                        r'fn \w+(?:<[^(]*>)?\(([^;{]*?)\)(?:\s*->\s*([^;{]+?))?\s*(?:where [^;]*)?;', re.S)

    def __init__(self, folder):
        self.functions, self.statics, self.constants = {}, {}, {}
        self.types, self.structs, self.methods, self.where = {}, {}, {}, {}
        self.kinds = {}  # what a named type of the crates is made of
        for path in sorted(glob.glob(os.path.join(folder, 'crates', '*', 'src', '**', '*.rs'),
                                     recursive=True)):
            with open(path, encoding='utf-8') as file:
                text = file.read()
            crate = path.split(os.sep + 'crates' + os.sep)[-1].split(os.sep)[0]
            self._read(re.sub(r'^\s*//.*$', '', text, flags=re.M), crate)

    def _note(self, table, name, value, crate):
        if name not in table:
            table[name] = value
            self.where.setdefault(name, crate)

    def _read(self, text, crate):
        for name, args, result in self.FUNCTION.findall(text):
            if 'self' not in args:
                types = [a.split(': ', 1)[1] for a in _split(args) if ': ' in a]
                self._note(self.functions, name, (types, result or '()'), crate)
        for name, kind in self.STATIC.findall(text):
            self._note(self.statics, name, kind, crate)
        for name, _, value in self.CONSTANT.findall(text):
            self._note(self.constants, name, value, crate)
        for name, value in self.MEMBER.findall(text):
            self._note(self.constants, name, value, crate)
        for name, kind in self.TYPE.findall(text):
            self._note(self.types, name, ' '.join(kind.split()), crate)
        for name, kind in self.TYPE.findall(text) + self.NEWTYPE.findall(text):
            self.kinds.setdefault(name, ' '.join(kind.split()))
        for name, fields in self.STRUCT.findall(text):
            self._note(self.structs, name, re.findall(r'pub (\w+): ([^\n]+),', fields), crate)
        self._methods(text, crate)

    def _methods(self, text, crate):
        owners = [(m.start(), m.group(1) or m.group(2)) for m in self.CLASS.finditer(text)]
        for found in self.METHOD.finditer(text):
            owner = ([''] + [name for at, name in owners if at < found.start()])[-1]
            args = [a for a in _split(found.group(2)) if not re.match(r'(&self|this:|&mut self|self\b)', a)]
            types = [a.split(': ', 1)[1] for a in args if ': ' in a and not a.startswith('_mtm')]
            self.methods.setdefault((owner, found.group(1)), (types, found.group(3) or '()', crate))

    def value(self, name):
        """The number of a constant, or None where the crates have none."""
        for _ in range(5):
            text = self.constants.get(name)
            if text is None:
                return None
            text = re.sub(r'\bas \w+|_(?=\d)|\.0$', '', text.strip())
            text = re.sub(r'(\w+)::(\w+)(?:\.0|\.bits\(\))?',
                          lambda m: str(self.value(m.group(1) + m.group(2)) or m.group(0)), text)
            cast = re.fullmatch(r'\w+\((.+)\)', text)
            text = cast.group(1) if cast else text
            if re.fullmatch(r'[-\s\dxa-fA-F<|()+~*]+', text):
                return eval(text)  # pylint: disable=eval-used
            if not re.fullmatch(r'[\w:]+', text):
                return None
            name = text.split('::')[-1]
        return None


class NativeScript:
    """Names, and the types roughly."""

    def __init__(self, folder):
        self.text = {}
        for path in glob.glob(os.path.join(folder, 'npm', '*.d.ts')):
            with open(path, encoding='utf-8') as file:
                self.text[os.path.basename(path)[:-5]] = file.read()
        self.names = {}
        for module, text in self.text.items():
            for name in re.findall(r'^(?:declare )?(?:const|function|class|interface|var|type)'
                                   r' (\w+)', text, re.M):
                self.names.setdefault(name, module)
