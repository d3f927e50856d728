#!/usr/bin/python3
"""Reports every protection of the compiler or linker that a built program lacks, by readelf and objdump.
Usage: check_hardening.py PROGRAM... Exit status: 0 if every program has all protections, else 1."""
import re
import subprocess
import sys

PAGE = 4096
OURS = re.compile(r"_ZNK?8kestrine|main$")


def output_of(*command):
    return subprocess.run(command, check=True, capture_output=True, text=True).stdout


def functions_of(program):
    """The machine code of our own functions: their mangled names, and their instructions as text."""
    functions, name = {}, None
    for line in output_of("objdump", "-d", "--no-show-raw-insn", "--section=.text", program).splitlines():
        if start := re.match(r"[0-9a-f]+ <(.*)>:$", line):
            name = start[1] if OURS.match(start[1]) else None
            if name:
                functions[name] = []
        elif name and line.startswith(" "):
            functions[name].append(line.split("\t")[-1].strip())
    return functions


def without_branch_targets(program, functions):
    """Functions whose address is used, in the code or in a table, but which do not start with endbr64."""
    addresses = {line.split()[0].lstrip("0"): line.split()[-1] for line in output_of("nm", program).splitlines()}
    in_tables = re.findall(r"_RELATIVE +([0-9a-f]+)$", output_of("readelf", "--wide", "--relocs", program), re.MULTILINE)
    used = {addresses.get(address) for address in in_tables} | {"main"}
    for code in functions.values():
        used.update(name for line in code for name in re.findall(r"^lea .*# [0-9a-f]+ <(.*)>$", line))
    return sorted(name for name in used if name in functions and functions[name][0] != "endbr64")


def with_unprobed_pages(functions):
    """Functions that lower the stack pointer by more than a page in one step."""
    steps = re.compile(r"(sub|add) +\$(-?0x[0-9a-f]+),%rsp$")

    def is_large(line):
        step = steps.match(line)
        size = (int(step[2], 16) if step else 0) & (1 << 64) - 1
        return step and PAGE < (size if step[1] == "sub" else -size & (1 << 64) - 1) < 1 << 63

    return [name for name, code in functions.items() if any(is_large(line) for line in code)]


def missing_in(program):
    header = output_of("readelf", "--wide", "--file-header", program)
    segments = output_of("readelf", "--wide", "--program-headers", program)
    dynamic = output_of("readelf", "--wide", "--dynamic", program)
    imports = output_of("readelf", "--wide", "--dyn-syms", program)
    if not re.search(r"Type: +DYN", header) or "INTERP" not in segments:
        yield "is not position-independent"
    if "GNU_RELRO" not in segments:
        yield "has writable relocations (no RELRO)"
    if not re.search(r"BIND_NOW|Flags:.*\bNOW\b", dynamic):
        yield "resolves symbols late, so that their table stays writable (no BIND_NOW)"
    if not re.search(r"GNU_STACK .* RW +0x", segments):
        yield "has an executable stack"
    if not re.search(r" __(?!stack_)\w+_chk\b", imports):
        yield "calls no function of the C library that checks sizes (FORTIFY_SOURCE)"
    functions = functions_of(program)
    if not functions:
        yield "has no names of functions, so its code cannot be checked"
    if not any("<__stack_chk_fail" in line for code in functions.values() for line in code):
        yield "has no function with a stack protector"
    if "X86-64" in header:
        yield from missing_in_x86_code(program, functions)


def missing_in_x86_code(program, functions):
    if names := without_branch_targets(program, functions):
        yield f"has {len(names)} functions without endbr64, such as {names[0]}"
    if names := with_unprobed_pages(functions):
        yield f"has {len(names)} functions that skip pages of the stack, such as {names[0]}"


if __name__ == "__main__":
    findings = [f"{program}: {finding}" for program in sys.argv[1:] for finding in missing_in(program)]
    print("\n".join(findings) or "no protection is missing")
    sys.exit(1 if findings else 0)
