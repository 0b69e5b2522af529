"""The stubs say what there is: every public name, and nothing else."""

import ast
import pathlib

import velmo

STUB = ast.parse((pathlib.Path(velmo.__file__).parent / "__init__.pyi").read_text())


def declared(body):
    for node in body:
        if isinstance(node, (ast.FunctionDef, ast.ClassDef)):
            yield node.name
        elif isinstance(node, ast.AnnAssign):
            yield node.target.id


def public(names):
    return {name for name in names if not name.startswith("_")}


def test_the_stubs_have_every_public_name():
    assert public(declared(STUB.body)) == public(velmo.__all__) | {"open"}  # which import * should not hide


def test_the_stubs_have_every_public_member():
    for node in STUB.body:
        if isinstance(node, ast.ClassDef):
            defined = public(vars(getattr(velmo, node.name)))
            assert public(declared(node.body)) == defined, node.name


def test_everything_public_says_what_it_does():
    classes = [getattr(velmo, node.name) for node in STUB.body if isinstance(node, ast.ClassDef)]
    silent = [owner.__name__ for owner in classes if not owner.__doc__]
    silent += [
        f"{owner.__name__}.{name}"
        for owner in classes
        for name, member in vars(owner).items()
        if not name.startswith("_") and not isinstance(member, int) and not getattr(member, "__doc__", None)
    ]
    functions = [node.name for node in STUB.body if isinstance(node, ast.FunctionDef)]
    silent += [name for name in functions if not getattr(velmo, name).__doc__]
    assert silent == []
