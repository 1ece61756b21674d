"""The mutants of a C++ file: small changes that some test ought to notice.

A mutant is written into a copy of its file so that the program asks for it while it runs:
`a < b` becomes `( mutantIs( 17 ) ? ( a <= b ) : ( a < b ) )`. Everything is therefore compiled once.
A change is a number of insertions around a range of the text; ranges nest and never overlap, and
the alternatives repeat the original text, so that one mutant at a time is in effect.

A number of which types and tables are made cannot be asked for: such a mutant is a text of the whole
file, for a compiler that may notice.
"""

import dataclasses
import re

from clang.cindex import CursorKind as Kind
from clang.cindex import Index, TypeKind

OTHER_OPERATORS = {
    "==": ["!="], "!=": ["=="], "&&": ["||"], "||": ["&&"], "+": ["-"], "-": ["+"], "+=": ["-="],
    "<": ["<=", ">="], "<=": ["<", ">"], ">": [">=", "<="], ">=": [">", "<"],
}
FUNCTIONS = (Kind.CXX_METHOD, Kind.FUNCTION_DECL, Kind.CONSTRUCTOR, Kind.DESTRUCTOR,
             Kind.CONVERSION_FUNCTION)
BLOCKS = (Kind.IF_STMT, Kind.CXX_FOR_RANGE_STMT, Kind.WHILE_STMT, Kind.SWITCH_STMT,
          Kind.CXX_TRY_STMT)  # end without a semicolon
CLASSES = (Kind.CLASS_DECL, Kind.STRUCT_DECL)
LITERAL = re.compile(r'["\d{]|true$|false$|nullptr$')
ASSERTION = "VEX_ASSERT"
COMMENT = re.compile(r"/\*.*?\*/|//[^\n]*", re.DOTALL)


@dataclasses.dataclass
class Mutant:
    number: int
    file: str
    line: int
    function: str
    text: str  # what is changed, and into what
    variant: str = ""  # the text of the file, where the mutant is known to the compiler already


class Copy:
    """The text of a file with insertions."""

    def __init__(self, text):
        self.text = text
        self.around = []  # (start, end, text before, text behind)
        self.choices = {}  # (start, end) -> (alternatives: number and text, as a bool)
        self.replaced = {}  # (start, end) -> text

    def wrap(self, start, end, before, behind=""):
        self.around.append((start, end, before, behind))

    def alternative(self, start, end, number, text, as_bool=False):
        alternatives, was_bool = self.choices.get((start, end), ([], False))
        self.choices[start, end] = (alternatives + [(number, text)], was_bool or as_bool)

    def render(self):
        around = list(self.around)
        for (start, end), (alternatives, as_bool) in self.choices.items():
            asked = "".join(f"mutantIs( {n} ) ? ( {text} ) : " for n, text in alternatives)
            cast = "static_cast< bool >" if as_bool else ""
            around.append((start, end, f"( {asked}{cast}( ", " ) )"))
        marks = []  # at one place: what ends there, inner first; then what begins, outer first
        for start, end, before, behind in around:
            marks.append((start, 1, -end if end > start else float("-inf"), before))
            marks.append((end, 0, -start, behind))
        marks.sort(key=lambda mark: mark[:3])
        out, at = [], 0
        for place, _, _, insertion in marks:
            out += [self._piece(at, place), insertion]
            at = place
        return "".join(out) + self._piece(at, len(self.text))

    def _piece(self, start, end):
        for (a, b), text in self.replaced.items():
            if start <= a and b <= end:
                return self._piece(start, a) + text + self._piece(b, end)
        return self.text[start:end]


class Finder:
    """Finds the mutants of one file, and writes them into its copy."""

    def __init__(self, root, file, first_number, includes=()):
        self.file = file
        self.root = root
        path = str(root / file)
        self.text = (root / file).read_bytes().decode("latin-1")  # one character a byte
        arguments = ["-xc++", "-std=c++20", f"-I{root}", *includes]
        unit = Index.create().parse(path, args=arguments)
        errors = [d for d in unit.diagnostics if d.severity >= 3]
        if errors:
            raise SystemExit(f"mutate: {file} does not compile: {errors[0]}")
        self.copy = Copy(self.text)
        self.mutants = []
        self.next = first_number
        self.function = ""
        self.fixed = []  # numbers that must be known to the compiler: name, start, end
        self.seen = set()  # an expression stands in the tree once for each implicit conversion
        for node in unit.cursor.get_children():
            if node.location.file and node.location.file.name == path:
                self.declaration(node)
        for name, start, end in self.fixed:
            self.function = name
            for other in other_numbers(self.plain(start, end)):
                if self.new(start, f"{self.plain(start, end)} => {other}"):
                    self.mutants[-1].variant = self.text[:start] + other + self.text[end:]

    # --- what all of them need ---------------------------------------------------------

    def range(self, node):
        return node.extent.start.offset, node.extent.end.offset

    def plain(self, start, end):
        return " ".join(COMMENT.sub(" ", self.text[start:end]).split())

    def source(self, node):
        return self.plain(*self.range(node))

    def in_macro(self, node):
        return self.text.startswith(ASSERTION, node.extent.start.offset)

    def new(self, start, text):
        """The number of a new mutant; none, when this very change was made already."""
        if (start, text) in self.seen:
            return None
        self.seen.add((start, text))
        line = self.text.count("\n", 0, start) + 1
        same = sum(1 for m in self.mutants if m.function == self.function
                   and re.sub(r" #\d+$", "", m.text) == text)
        if same:
            text += f" #{same + 1}"
        self.mutants.append(Mutant(self.next, self.file, line, self.function, text))
        self.next += 1
        return self.next - 1

    def instead(self, node, text, as_bool=False):
        """A mutant that has this text in place of an expression."""
        start, end = self.range(node)
        number = self.new(start, f"{self.plain(start, end)} => {text}")
        if number:
            self.copy.alternative(start, end, number, text, as_bool)

    # --- declarations ------------------------------------------------------------------

    def declaration(self, node):
        if node.kind in FUNCTIONS:
            self.function_body(node)
        elif node.kind in (Kind.VAR_DECL, Kind.FIELD_DECL):
            self.function = node.spelling
            self.variable(node)
        elif node.kind == Kind.ENUM_DECL:
            for enumerator in node.get_children():
                for value in enumerator.get_children():
                    self.fixed.append((enumerator.spelling, *self.range(value)))
        elif node.kind in CLASSES or node.kind == Kind.NAMESPACE:
            for child in node.get_children():
                self.declaration(child)

    def function_body(self, node):
        names = [node.spelling]
        parent = node.semantic_parent
        while parent.kind in CLASSES:
            names.insert(0, parent.spelling)
            parent = parent.semantic_parent
        self.function = "::".join(names[-2:])
        children = list(node.get_children())
        for before, child in zip(children, children[1:]):
            if before.kind == Kind.MEMBER_REF:
                self.initializer(before, child)
        if children and children[-1].kind == Kind.COMPOUND_STMT:
            head = self.text[node.extent.start.offset:node.location.offset]
            if "constexpr" in head:  # what asks which mutant it is, is no constant
                self.replace_word(node, head, "constexpr", "inline")
            self.returned = node.result_type
            self.block(children[-1], is_body=True)

    def initializer(self, member, value):
        """What a constructor gives to a member: nothing instead."""
        while value.extent.start.offset <= member.extent.end.offset:
            value = next(value.get_children(), None)
            if value is None:
                return
        self.instead(value, f"std::remove_cvref_t< decltype( {self.source(value)} ) >{{}}")
        self.expression(value)

    def variable(self, node):
        """The initializer of a variable; what precedes its name is its type."""
        parts = [c for c in node.get_children()
                 if c.extent.start.offset >= node.location.offset and c.kind.is_expression()]
        if not parts:
            return
        head = self.text[node.extent.start.offset:node.location.offset]
        if "constexpr" in head:
            if not self.constant(node, head, parts):
                return
        for part in parts:
            if node.type.get_canonical().spelling in ("bool", "const bool"):
                self.condition(part)
            else:
                self.expression(part)

    def constant(self, node, head, parts):
        """Makes a constant one that is known when the program starts; whether that is possible."""
        if "string_view" in head:
            self.text_constant(node, parts[-1])
            return False
        kind = node.type.get_canonical().kind
        if kind not in (TypeKind.RECORD, TypeKind.ELABORATED, TypeKind.CONSTANTARRAY):
            self.fixed.append((node.spelling, *self.range(parts[-1])))
            return False
        in_class = node.semantic_parent.kind in CLASSES
        self.replace_word(node, head, "constexpr", "inline const" if in_class else "const")
        return True

    def replace_word(self, node, head, word, other):
        place = node.extent.start.offset + head.index(word)
        self.copy.replaced[place, place + len(word)] = other

    def text_constant(self, node, literal):
        start, end = self.range(literal)
        text = self.text[start:end]
        number = self.new(start, f'{text} => {changed_text(text)}')
        self.copy.wrap(node.extent.start.offset, node.extent.start.offset,
                       f"static inline char text{number}[] = {text}; static inline const bool "
                       f"changed{number} = mutateText( text{number}, {number} ); ")
        self.copy.replaced[start, end] = f"std::string_view( text{number}, sizeof text{number} - 1 )"

    # --- statements --------------------------------------------------------------------

    def statement_end(self, node):
        end = node.extent.end.offset
        if node.kind in BLOCKS or node.kind == Kind.COMPOUND_STMT:
            return end
        return self.text.index(";", end) + 1

    def block(self, node, is_body=False):
        statements = []
        for child in node.get_children():
            while child.kind == Kind.CASE_STMT:
                child = list(child.get_children())[-1]
            statements.append(child)
        labels = {s.hash for c in node.get_children() if c.kind == Kind.CASE_STMT
                  for s in statements if s.extent.end == c.extent.end}
        for at, child in enumerate(statements):
            last = at + 1 == len(statements)
            before = None if at == 0 or child.hash in labels else statements[at - 1]
            if child.hash in labels:
                self.case(statements, at, labels)
            idle = all(s.kind == Kind.BREAK_STMT for s in statements[at + 1:])
            self.statement(child, before, is_body and last, idle)

    def case(self, statements, at, labels):
        """A case that does nothing; where it is one call, deleting that says the same."""
        own = [statements[at]]
        for following in statements[at + 1:]:
            if following.hash in labels:
                break
            own.append(following)
        acting = [s for s in own if s.kind != Kind.BREAK_STMT]
        if len(acting) > 1 or acting and acting[0].kind == Kind.IF_STMT:
            start = own[0].extent.start.offset
            number = self.new(start, f"case: {self.source(own[0])[:60]} ... => break")
            self.copy.wrap(start, start, f"if ( mutantIs( {number} ) ) {{ break; }} ")

    def statement(self, node, before, ends_function, idle_behind):
        start, end = node.extent.start.offset, self.statement_end(node)
        text = self.plain(start, end)
        guards = []
        if node.kind == Kind.RETURN_STMT:
            self.returning(node, start, end, ends_function)
        elif node.kind == Kind.BREAK_STMT:
            if not idle_behind:
                guards.append(self.new(start, f"{text} => deleted"))
        elif node.kind.is_expression() or self.in_macro(node) or node.kind in (
                Kind.CXX_FOR_RANGE_STMT, Kind.WHILE_STMT):
            guards.append(self.new(start, f"{shortened(text)} => deleted"))
        if before is not None and exchangeable(before) and exchangeable(node):
            first = before.extent.start.offset
            first_text = self.plain(first, self.statement_end(before))
            number = self.new(
                first, f"{shortened(first_text)} {shortened(text)} => exchanged")
            self.copy.wrap(first, first, f"if ( mutantIs( {number} ) ) {{ {text} }} ")
            guards.append(number)
        if guards:
            kept = " && ".join(f"!mutantIs( {number} )" for number in guards)
            self.copy.wrap(start, end, f"if ( {kept} ) {{ ", " }")
        if not self.in_macro(node):
            self.inside(node)

    def returning(self, node, start, end, ends_function):
        value = next(node.get_children(), None)
        text = self.plain(start, end)
        if not ends_function:
            number = self.new(start, f"{text} => deleted")
            self.copy.wrap(start, end, f"if ( !mutantIs( {number} ) ) {{ ", " }")
        if value is None:
            return
        kind = self.returned.get_canonical()
        if self.returned.kind == TypeKind.AUTO:  # it may be a type without a default
            return
        if kind.spelling == "bool" or self.source(value) in ("{}", "nullptr"):
            return
        if kind.kind == TypeKind.LVALUEREFERENCE:
            if not kind.get_pointee().is_const_qualified():
                return
            value_type = f"std::remove_cvref_t< decltype( {self.source(value)} ) >"
            instead = f"static const {value_type} none{{}}; return none;"
        else:
            instead = "return {};"
        number = self.new(start, f"{text} => return {{}};")
        self.copy.wrap(start, start, f"if ( mutantIs( {number} ) ) {{ {instead} }} ")

    def inside(self, node):
        """The conditions, blocks and expressions of a statement."""
        children = list(node.get_children())
        if node.kind == Kind.RETURN_STMT:
            for child in children:
                if self.returned.get_canonical().spelling == "bool":
                    self.condition(child)
                else:
                    self.expression(child)
        elif node.kind in (Kind.IF_STMT, Kind.WHILE_STMT):
            if children[0].kind == Kind.VAR_DECL:
                self.declared_condition(children[0])
                children = children[1:]
            else:
                self.condition(children[0])
            for child in children[1:]:
                self.nested(child)
        elif node.kind == Kind.CXX_FOR_RANGE_STMT:
            body = children[-1]
            number = self.new(body.extent.start.offset, f"{self.loop_head(node)} => first one only")
            place = body.extent.end.offset - 1
            self.copy.wrap(place, place, f"if ( mutantIs( {number} ) ) {{ break; }} ")
            self.nested(body)
        elif node.kind == Kind.SWITCH_STMT:
            self.block(children[-1])
        elif node.kind == Kind.COMPOUND_STMT:
            self.block(node)
        elif node.kind in (Kind.CXX_TRY_STMT, Kind.CXX_CATCH_STMT):
            for child in children:
                self.nested(child)
        elif node.kind == Kind.DECL_STMT:
            for child in children:
                self.variable(child)
        else:
            self.expression(node)

    def loop_head(self, node):
        body = list(node.get_children())[-1]
        return self.plain(node.extent.start.offset, body.extent.start.offset)

    def nested(self, node):
        if node.kind == Kind.COMPOUND_STMT:
            self.block(node)
        else:
            self.inside(node)  # else if

    # --- expressions -------------------------------------------------------------------

    def condition(self, node):
        """Negated, and forced either way; and what stands in it."""
        text = self.source(node)
        if text in ("true", "false"):
            self.expression(node)
            return
        if not (text.startswith("!") or re.search(r" [=!]= ", text)) or "&&" in text or "||" in text:
            self.instead(node, f"!static_cast< bool >( {text} )", as_bool=True)
        self.instead(node, "true", as_bool=True)
        self.instead(node, "false", as_bool=True)
        self.expression(node)

    def declared_condition(self, node):
        """`if ( const auto sm = owner() )`, whose variable is the condition."""
        name, (start, end) = node.spelling, self.range(node)
        asked = ""
        for text in (f"!static_cast< bool >( {name} )", "true", "false"):
            number = self.new(start, f"if ( {self.plain(start, end)} ) => if ( {text} )")
            asked += f"mutantIs( {number} ) ? {text} : "
        self.copy.wrap(start, end, "", f"; ( {asked}static_cast< bool >( {name} ) )")
        self.variable(node)

    def expression(self, node):
        if self.in_macro(node):
            return
        kind = node.kind
        if kind == Kind.STRING_LITERAL:
            text = self.text[slice(*self.range(node))]
            self.instead(node, changed_text(text))
        elif kind == Kind.INTEGER_LITERAL:
            for other in other_numbers(self.source(node)):
                self.instead(node, other)
        elif kind == Kind.FLOATING_LITERAL:
            self.instead(node, "0.0")
            self.instead(node, f"{self.source(node)} * 2")
        elif kind == Kind.CXX_BOOL_LITERAL_EXPR:
            self.instead(node, "false" if self.source(node) == "true" else "true")
        elif kind == Kind.DECL_REF_EXPR:
            self.reference(node)
            return  # its children are names and template arguments
        elif kind == Kind.UNARY_OPERATOR and re.match("![^=]", self.source(node)):
            operand = next(node.get_children())
            self.instead(node, f"static_cast< bool >( {self.source(operand)} )", as_bool=True)
        elif kind in (Kind.BINARY_OPERATOR, Kind.COMPOUND_ASSIGNMENT_OPERATOR):
            self.operator(node)
        elif kind == Kind.CONDITIONAL_OPERATOR:
            self.condition(next(node.get_children()))
        elif kind == Kind.CALL_EXPR:
            self.overloaded_operator(node)
            self.call(node)
        if kind == Kind.INIT_LIST_EXPR:
            self.exchanged_arguments(list(node.get_children()))
        for child in node.get_children():
            if child.kind.is_expression() and child.extent.end.offset > child.extent.start.offset:
                self.expression(child)

    def reference(self, node):
        named = node.referenced
        if named is None:
            return
        if named.kind == Kind.ENUM_CONSTANT_DECL:
            text = self.source(node)
            before = text[:len(text) - len(named.spelling)]
            for other in named.semantic_parent.get_children():
                if other.kind == Kind.ENUM_CONSTANT_DECL and other.spelling != named.spelling:
                    self.instead(node, before + other.spelling)
        elif named.kind == Kind.VAR_DECL and node.type.get_canonical().spelling.startswith(
                "const std::optional<"):
            self.other_constants(node, named)

    def other_constants(self, node, named):
        """An entry of a table: the other constants of its type that stand beside it."""
        for other in named.semantic_parent.get_children():
            if other.kind == Kind.VAR_DECL and other.spelling != named.spelling \
                    and other.type.spelling == named.type.spelling:
                self.instead(node, other.spelling)

    def operator(self, node):
        left, right = node.get_children()
        start, end = left.extent.end.offset, right.extent.start.offset
        self.other_operators(node, self.plain(start, end), left, right)

    def overloaded_operator(self, node):
        """A call that is written as an operator; also `!=` where only `==` is declared."""
        start, end = self.range(node)
        for child in node.get_children():
            a, b = self.range(child)
            name = self.text[a:b]
            if child.spelling.startswith("operator") and name in OTHER_OPERATORS and start < a \
                    and b < end:
                for other in OTHER_OPERATORS[name]:
                    self.instead(node, f"{self.plain(start, a)} {other} {self.plain(b, end)}")

    def other_operators(self, node, name, left, right):
        pointers = any(side.type.get_canonical().kind == TypeKind.POINTER for side in (left, right))
        for other in OTHER_OPERATORS.get(name, []):
            if not (pointers and other in ("+", "-")):  # two pointers cannot be added
                self.instead(node, f"{self.source(left)} {other} {self.source(right)}")
        if name in ("&&", "||"):
            for side in (left, right):
                inner = [c for c in side.get_children() if c.extent.start != side.extent.start]
                same_chain = side.kind == Kind.BINARY_OPERATOR and inner and \
                    self.plain(next(side.get_children()).extent.end.offset,
                               inner[-1].extent.start.offset) == name
                if not same_chain:
                    self.instead(side, "true" if name == "&&" else "false", as_bool=True)
                    self.instead(side, "false" if name == "&&" else "true", as_bool=True)

    def call(self, node):
        arguments = [a for a in node.get_arguments() if a is not None]
        if node.spelling == "operator()" or not node.spelling.startswith("operator"):
            self.exchanged_arguments(arguments)
        if arguments and self.source(arguments[0]).startswith("Vex::at<"):
            text = self.source(node)
            level = int(re.search(r"Vex::at< (\d+) >", text)[1])
            changed = text.replace(f"Vex::at< {level} >", f"Vex::at< {level + 1} >", 1)
            start, end = self.range(node)
            number = self.new(start, f"{shortened(text)} => Vex::at< {level + 1} >")
            if number:
                self.copy.alternative(start, end, number, changed)

    def exchanged_arguments(self, arguments):
        """Two arguments of one type that change places."""
        def type_of(node):
            return node.type.get_canonical().spelling.removeprefix("const ").removesuffix(" &")

        candidates = [a for a in arguments if a.extent.end.offset > a.extent.start.offset
                      and not LITERAL.match(self.source(a))]
        for at, first in enumerate(candidates):
            second = next((c for c in candidates[at + 1:] if type_of(c) == type_of(first)), None)
            if second is None or self.source(first) == self.source(second):
                continue
            number = self.new(first.extent.start.offset,
                              f"{self.source(first)}, {self.source(second)} => exchanged")
            if number:
                self.copy.alternative(*self.range(first), number, self.source(second))
                self.copy.alternative(*self.range(second), number, self.source(first))


def exchangeable(node):
    return node.kind.is_expression() or node.kind in BLOCKS


def changed_text(literal):
    """The literal with another first letter; of the same length, so that its type is the same."""
    return '"~' + literal[2:]


def other_numbers(literal):
    digits = re.match(r"\d*", literal)[0]
    if not digits:
        return []  # written by a macro
    suffix = literal[len(digits):]
    number = int(digits)
    return [f"{n}{suffix}" for n in (number - 1, number + 1) if n >= 0]


def shortened(text):
    return text if len(text) <= 90 else text[:60] + " ... " + text[-25:]
