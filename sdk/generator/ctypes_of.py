"""C types: of Objective-C type encodings, and of the crates' Rust types."""
import re

ENCODED = {'v': 'void', 'c': 'signed char', 'B': 'bool', 'Z': 'Boolean', 'i': 'int32_t',
           'I': 'uint32_t', 's': 'int16_t', 'S': 'uint16_t', 'l': 'long', 'L': 'unsigned long',
           'q': 'int64_t', 'Q': 'uint64_t', 'f': 'float', 'd': 'double', '@': 'id', ':': 'SEL',
           '*': 'char *', '@?': 'id', '#': 'Class', 'z': 'size_t', 'C': 'uint8_t'}
RUST = {'()': 'void', 'bool': 'bool', 'i8': 'int8_t', 'u8': 'uint8_t', 'i16': 'int16_t',
        'u16': 'uint16_t', 'i32': 'int32_t', 'u32': 'UInt32', 'i64': 'int64_t', 'u64': 'uint64_t',
        'usize': 'size_t', 'isize': 'CFIndex', 'f32': 'float', 'f64': 'double', 'c_void': 'void',
        'c_char': 'char', 'c_int': 'int', 'c_uint': 'unsigned int', 'c_float': 'float',
        'c_double': 'double', 'CFType': 'CFTypeRef', 'libc::mach_port_t': 'mach_port_t',
        'Boolean': 'Boolean', 'NonNull<c_void>': 'void *', 'AnyObject': 'id', 'kern_return_t':
        'kern_return_t', 'libc::kern_return_t': 'kern_return_t', 'libc::pid_t': 'pid_t'}


def encoded(text, at=0):
    """The C type at `at` of an encoding, and where the next one begins."""
    c = text[at]
    if c in 'rnNoORV':
        kind, after = encoded(text, at + 1)
        return ('const ' + kind if c == 'r' else kind), after
    if c == '^':
        if text[at + 1] == '?':
            return 'void *', at + 2
        kind, after = encoded(text, at + 1)
        return kind + ' *', after
    if c == '[':
        count = re.match(r'\[(\d+)', text[at:]).group(1)
        kind, after = encoded(text, at + 1 + len(count))
        return f'{kind}[{count}]', after + 1
    if c == '{':
        depth = 0
        for after in range(at, len(text)):
            depth += (text[after] == '{') - (text[after] == '}')
            if depth == 0:
                return 'struct ' + text[at + 1:after].split('=')[0], after + 1
    if text[at:at + 2] == '@?':
        return 'id', at + 2
    return ENCODED[c], at + 1


def fields(typestr):
    """The types inside the encoding of a struct."""
    body, at, types = typestr[1:-1].split('=', 1)[1], 0, []
    while at < len(body):
        kind, at = encoded(body, at)
        types.append(kind)
    return types


def rust(text, is_reference):
    """The C type of a Rust type; is_reference says whether a name has a counted reference type."""
    text = text.strip()
    if ' fn(' in text:
        return 'void *'  # a function that is only ever passed on
    if text in RUST:
        return RUST[text]
    inner = re.fullmatch(r"(?:Option|Retained|CFRetained|NonNull)<(.+)>|&(?:'static )?(?:mut )?(.+)", text)
    if inner:
        name = inner.group(1) or inner.group(2)
        kind = rust(name, is_reference)
        if kind == 'CFTypeRef' or '*' in kind or kind.endswith('Ref'):
            return kind + (' *' if text.startswith('NonNull<*') else '')
        return kind + ' *'
    pointer = re.fullmatch(r'\*(mut|const) (.+)', text)
    if pointer:
        kind = rust(pointer.group(2), is_reference)
        if is_reference(pointer.group(2)):
            return kind
        return ('const ' if pointer.group(1) == 'const' else '') + kind + ' *'
    array = re.fullmatch(r'\[(.+); (\d+)\]', text)
    if array:
        return f'{rust(array.group(1), is_reference)}[{array.group(2)}]'
    name = re.sub(r'<.*', '', text).split('::')[-1]
    return name + 'Ref' if is_reference(name) else name
