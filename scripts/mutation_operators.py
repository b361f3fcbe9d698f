"""Small faults in C++ text, as a slip of the hand or of the mind makes them.

The sources are formatted: a binary operator stands between blanks, a pointer's star and a template's
bracket do not, so tokens are enough to tell them apart."""
import re

# What no fault is planted in: comments, strings (but by their own operator), the preprocessor, what
# only the compiler checks, and assembler that is a hint to the compiler.
_SKIPPED = re.compile(
    r'//[^\n]*|/\*.*?\*/|^[ \t]*\#[^\n]*(?:\\\n[^\n]*)*|"(?:\\.|[^"\\\n])*"|\'(?:\\.|[^\'\\])+\''
    r'|static_assert\([^;]*;|^[ \t]*asm[^;]*;|\boperator\s*\S+', re.S | re.M)

_BINARY = {
    '+': ['-'], '-': ['+'], '*': ['/'], '/': ['*'], '%': ['/'],
    '<<': ['>>'], '>>': ['<<'], '&': ['|'], '|': ['&'], '^': ['|'],
    '<': ['<=', '>='], '<=': ['<', '>'], '>': ['>=', '<='], '>=': ['>', '<'], '==': ['!='],
    '!=': ['=='], '&&': ['||'], '||': ['&&'],
    '+=': ['-='], '-=': ['+='], '*=': ['/='], '/=': ['*='], '|=': ['=', '&='], '&=': ['|='],
}

# A name for another that takes the same arguments.
_NAMES = [
    ('true', 'false'), ('min', 'max'), ('memcpy', 'memmove'), ('WholeGroups', 'Width'),
    ('QCRaw10', 'VXRaw10'), ('QCRaw12', 'VXRaw12'), ('src', 'dst'), ('inStride', 'outStride'),
    ('inWidth', 'outWidth'), ('inHeight', 'outHeight'), ('inFormat', 'outFormat'),
    ('inPitch', 'outPitch'), ('pedestal', 'maximum'), ('low', 'high'), ('first', 'second'),
    ('even', 'odd'), ('QCEVComp10', 'QCEVComp12'), ('VXTetra10', 'VXTetra12'),
    ('VXTetra10To12', 'VXTetra12To10'), ('VXHexadeca', 'VXHexadecaTo12'),
    ('qc', 'vx'), ('ANDROID_LOG_DEBUG', 'ANDROID_LOG_INFO'),
    # x86
    ('_mm256_add_epi16', '_mm256_sub_epi16'), ('_mm256_add_epi32', '_mm256_sub_epi32'),
    ('_mm256_add_epi16', '_mm256_adds_epi16'),
    ('_mm256_and_si256', '_mm256_or_si256'), ('_mm256_and_si256', '_mm256_andnot_si256'),
    ('_mm256_srli_epi16', '_mm256_slli_epi16'), ('_mm256_srli_epi32', '_mm256_slli_epi32'),
    ('_mm256_srli_epi16', '_mm256_srai_epi16'), ('_mm256_srl_epi16', '_mm256_sra_epi16'),
    ('_mm256_packus_epi32', '_mm256_packs_epi32'), ('_mm256_min_epu16', '_mm256_max_epu16'),
    ('_mm256_min_epu16', '_mm256_min_epi16'), ('_mm256_mulhi_epu16', '_mm256_mulhi_epi16'),
    ('_mm256_subs_epu16', '_mm256_sub_epi16'), ('_mm256_subs_epu16', '_mm256_subs_epi16'),
    ('_mm256_unpacklo_epi16', '_mm256_unpackhi_epi16'), ('_mm256_cvttps_epi32', '_mm256_cvtps_epi32'),
    ('_mm256_fmadd_ps', '_mm256_fmsub_ps'), ('_mm256_mullo_epi16', '_mm256_mulhi_epi16'),
    ('_mm256_inserti128_si256', '_mm256_insertf128_si256'),
    # aarch64
    ('vzip1q_u8', 'vzip2q_u8'), ('vzip1q_u16', 'vzip2q_u16'), ('vuzp1q_u8', 'vuzp2q_u8'),
    ('vuzp1q_u16', 'vuzp2q_u16'), ('vget_low_u8', 'vget_high_u8'), ('vandq_u8', 'vorrq_u8'),
    ('vbicq_u8', 'vandq_u8'), ('vandq_u16', 'vorrq_u16'), ('vaddq_u8', 'vsubq_u8'),
    ('vaddw_u8', 'vsubw_u8'), ('vaddw_high_u8', 'vsubw_high_u8'), ('vqsubq_u16', 'vsubq_u16'),
    ('vminq_u16', 'vmaxq_u16'), ('vsriq_n_u8', 'vsraq_n_u8'), ('vmlsq_u8', 'vmlaq_u8'),
    ('vqdmulhq_n_s16', 'vqrdmulhq_n_s16'), ('vfmaq_f32', 'vfmsq_f32'), ('vshrn_n_u16', 'vrshrn_n_u16'),
    ('vqtbl2q_u8', 'vqtbx2q_u8'), ('vld1q_u8', 'vld1q_dup_u8'), ('vshrq_n_u8', 'vrshrq_n_u8'),
    ('vmlal_u8', 'vmlsl_u8'), ('vmlal_high_u8', 'vmlsl_high_u8'),
]

# Whose two arguments may change places without any effect.
_COMMUTES = re.compile(r'_(add|adds|and|or|xor|madd|mullo|mulhi|min|max|sad)_|^v(p?add|and|orr|min|max)q')
_CALL = re.compile(r'\b(_mm\w+|v\w+q?\w*_[us]\d+|LoadHalves|StoreHalves|std::min|std::max|Least)\(')
_STATEMENT = re.compile(
    r'^[ \t]+(?:if \([^\n{}]*\) )?((?:[\w:.\[\]*]|->)+(?:\(| [-+|&]?= )[^\n;{}]*;|break;|return;|continue;)$',
    re.M)


def _swaps(text):
    pairs = {}
    for a, b in _NAMES:
        pairs.setdefault(a, []).append(b)
        pairs.setdefault(b, []).append(a)
    for match in re.finditer(r'(?<![\w])\w+', text):
        for other in pairs.get(match.group(), []):
            yield match.start(), match.end(), other, 'name'


def _operators(text):
    for match in re.finditer(r'(?<= )([-+*/%&|^<>=!]{1,3})(?= )|(?<= )([-+*/%&|^<>=!]{1,3})(?=\n)', text):
        for other in _BINARY.get(match.group(), []):
            yield match.start(), match.end(), other, 'operator'
    for match in re.finditer(r'\+\+|--', text):
        yield match.start(), match.end(), {'++': '--', '--': '++'}[match.group()], 'operator'
    for match in re.finditer(r'(?<=[( ])!(?=[\w(])', text):
        yield match.start(), match.end(), '', 'negation'
    for match in re.finditer(r'(?<=[(, ])-(?=\w)|~(?=\w)', text):
        yield match.start(), match.end(), '', 'sign'


def _constants(text):
    for match in re.finditer(r"(?<![\w.'])(0[xX][0-9A-Fa-f']+|0b[01]+|\d[\d']*)([uUlL]*)(?![\w.'])", text):
        value = int(match.group(1).replace("'", ''), 0)
        for other in (value + 1, value - 1):
            if other >= 0:
                shown = hex(other) if match.group(1)[:2] in ('0x', '0X') else str(other)
                yield match.start(), match.end(), shown + match.group(2), 'constant'
    for match in re.finditer(r'(?<![\w.])(\d+\.\d+|0x1p[-+]?\d+)f', text):
        yield match.start(), match.end(), f'({match.group()} * 2)', 'constant'


def _conditions(text):
    for match in re.finditer(r'\b(?:if|while) (?:constexpr )?\(', text):
        end = _closing(text, match.end() - 1)
        inside = text[match.end():end]
        if '=' not in re.sub(r'[=!<>]=', '', inside):
            yield match.end(), end, f'!({inside})', 'condition'


def _closing(text, opening):
    depth = 0
    for i in range(opening, len(text)):
        depth += {'(': 1, ')': -1}.get(text[i], 0)
        if depth == 0:
            return i
    return len(text)


def _arguments(text):
    for match in _CALL.finditer(text):
        if _COMMUTES.search(match.group(1)) or match.group(1).startswith(('std', 'Least')):
            continue
        end, depth, cuts = _closing(text, match.end() - 1), 0, [match.end()]
        for i in range(match.end(), end):
            depth += {'(': 1, '{': 1, '[': 1, ')': -1, '}': -1, ']': -1}.get(text[i], 0)
            if text[i] == ',' and depth == 0:
                cuts.append(i + 1)
        parts = [text[a:b].strip(' \n,') for a, b in zip(cuts, cuts[1:] + [end])]
        for i in range(len(parts) - 1):
            if parts[i] != parts[i + 1]:
                swapped = parts[:i] + [parts[i + 1], parts[i]] + parts[i + 2:]
                yield match.end(), end, ', '.join(swapped), 'arguments'


def _statements(text):
    for match in _STATEMENT.finditer(text):
        yield match.start(1), match.end(1), ';', 'statement'


def mutants(text):
    """All single mutants of a file: (start, end, replacement, kind), in a stable order."""
    skipped = [m.span() for m in _SKIPPED.finditer(text)]
    found = []
    for operator in (_swaps, _operators, _constants, _conditions, _arguments, _statements):
        for start, end, other, kind in operator(text):
            if text[start:end] != other and not any(a <= start < b for a, b in skipped):
                found.append((start, end, other, kind))
    for match in _SKIPPED.finditer(text):
        if match.group().startswith('"') and len(match.group()) > 3:
            found.append((match.start() + 1, match.start() + 2, '', 'text'))
    return sorted(set(found))
