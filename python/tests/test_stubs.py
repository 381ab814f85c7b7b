"""The type stubs say what the module has: every class, operation and attribute, with the same arguments and defaults.

The operations of the core show their arguments in the first line of their docstrings, those in Python by themselves.
"""

import ast
import inspect
import re

import pytest

import zyn3dgradop as z

RECORDS = ("Patch", "PartitionFaces")  # named tuples
LANGUAGE = {"__init__", "__call__"}  # of the names with underscores, those that are called with arguments


@pytest.fixture(scope="module")
def stubs(source):
    tree = ast.parse((source / "python" / "zyn3dgradop" / "__init__.pyi").read_text())
    return {node.name: node for node in tree.body if isinstance(node, ast.ClassDef)}


def is_property(function):
    return any(isinstance(one, ast.Name) and one.id == "property" for one in function.decorator_list)


def is_static(function):
    return any(isinstance(one, ast.Name) and one.id == "staticmethod" for one in function.decorator_list)


def arguments_of(arguments):
    """[(name, is keyword only, default as text or None)] of an ast.arguments, without self."""
    positional = arguments.posonlyargs + arguments.args
    defaults = [None] * (len(positional) - len(arguments.defaults)) + list(arguments.defaults)
    found = [(arg.arg, False, default) for arg, default in zip(positional, defaults)]
    found += [(arg.arg, True, default) for arg, default in zip(arguments.kwonlyargs, arguments.kw_defaults)]
    return [(name, keyword, None if default is None else repr(ast.literal_eval(default)))
            for name, keyword, default in found if name != "self"]


def arguments_of_module(attribute):
    """The same of what the module has."""
    doc = inspect.getdoc(attribute) or ""
    if inspect.isfunction(attribute):
        parameters = inspect.signature(attribute).parameters.values()
        first = {"mesh"} if attribute.__module__.endswith("_fields") else {"self"}
        return [(one.name, one.kind is one.KEYWORD_ONLY,
                 None if one.default is one.empty else repr(one.default)) for one in parameters if one.name not in first]
    line = doc.splitlines()[0]
    assert re.match(r"\w+\(.*\) -> ", line), f"no signature: {line!r}"
    # Types of the core's own classes stand in angle brackets or with the module's name, which are no matter here.
    signature = re.sub(r"zyn3dgradop\.(_core\.)?", "", line)
    function = ast.parse(f"def {signature}: ...").body[0]
    return arguments_of(function.args)


def test_stubs_list_what_the_module_offers(stubs):
    assert set(stubs) == {name for name in z.__all__ if inspect.isclass(getattr(z, name))}
    assert set(z.__all__) == set(stubs) | {"__version__"}


@pytest.mark.parametrize("name", z.__all__)
def test_attributes(stubs, name):
    if name not in stubs or name in RECORDS:
        return
    of_stub = {node.name for node in stubs[name].body if isinstance(node, ast.FunctionDef)}
    of_class = {part for part in vars(getattr(z, name)) if not part.startswith("_") or part in LANGUAGE}
    # Records that only the module makes have no constructor to be called.
    assert of_stub == (of_class - {"__init__"} if "__init__" not in of_stub else of_class)


@pytest.mark.parametrize("name", z.__all__)
def test_signatures(stubs, name):
    cls = getattr(z, name)
    for function in stubs[name].body if name in stubs else []:
        if not isinstance(function, ast.FunctionDef):
            continue
        attribute = inspect.getattr_static(cls, function.name)
        if is_property(function):
            assert isinstance(attribute, property), function.name
            continue
        assert is_static(function) == isinstance(attribute, staticmethod), function.name
        assert arguments_of(function.args) == arguments_of_module(getattr(cls, function.name)), function.name


@pytest.mark.parametrize("name", RECORDS)
def test_records(stubs, name):
    fields = [node for node in stubs[name].body if isinstance(node, ast.AnnAssign)]
    cls = getattr(z, name)
    assert tuple(field.target.id for field in fields) == cls._fields
    assert {field.target.id: ast.literal_eval(field.value) for field in fields if field.value} == cls._field_defaults


def test_package_is_marked_as_typed(source):
    assert (source / "python" / "zyn3dgradop" / "py.typed").exists()
