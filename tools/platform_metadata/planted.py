"""Tests the comparison: plants a wrong slot, identifier, parameter type and enumeration value in a
copy of the table and of src/platform/abi. Each must be found."""
import shutil

import facts
from compiler import read_compiler
from declared import Declared
from table import Table

TABLE = (("\t9\tget_State\t", "\t10\tget_State\t"),
         ("IRadioStatics\t5fb6a12e", "IRadioStatics\t5fb6a12f"),
         ("\tReadByte\tBYTE* value", "\tReadByte\tUINT16* value"),
         ("RadioState\t-\t-\t1\tOn", "RadioState\t-\t-\t2\tOn"))
HEADERS = (("get_State(RadioState* value)", "get_ThirdState(RadioState* value)"),
           ("get_Name(HSTRING* value) = 0;\n    virtual HRESULT get_Kind",
            "get_State(RadioState* value) = 0;\n    virtual HRESULT get_Kind"),
           ("get_ThirdState(RadioState* value)", "get_Name(HSTRING* value)"),
           ('Guid("5fb6a12e', 'Guid("5fb6a12f'),
           ("ReadByte(BYTE* value)", "ReadByte(UINT16* value)"),
           ("On = 1, Off", "On = 2, Off"))
FOUND = {"IRadio, slot get_State", "IRadioStatics, id", "IDataReader, parameters ReadByte",
         "RadioState, value On"}


def plant(text, faults):
    for right, wrong in faults:
        text = text.replace(right, wrong)
    return text


def missed(name, found, official, also=()):
    """Returns a line for each planted fault that the comparison with an official source does not
    find, and for each difference that was not planted."""
    lines = facts.compare(name, found, official)[1]
    named = {line.split(":")[0] for line in lines}
    faults = [f"not planted in the {name}, but found: {other}"
              for other in named - FOUND - set(also)]
    for fault in FOUND:
        for place in official:
            if not any(line.startswith(fault + ":") and f"the {place} have" in line
                       for line in lines):
                faults.append(f"planted in the {name}, but not found in the {place}: {fault}")
    return faults


def check_planted(table, declared, official, build):
    """Returns a line for each planted fault that is not found."""
    copy = build / "planted"
    shutil.rmtree(copy, ignore_errors=True)
    abi = copy / "src/platform/abi"
    abi.mkdir(parents=True)
    for header in declared.headers:
        (abi / header.name).write_text(plant(header.read_text(encoding="utf-8"), HEADERS),
                                       encoding="utf-8")
    (copy / "table.tsv").write_text(plant(table.read_text(encoding="utf-8"), TABLE),
                                    encoding="utf-8")
    # The fault planted in the header swaps get_State with get_Name, so get_Name differs, too.
    return (missed("table", Table(copy / "table.tsv").facts, official) +
            missed("compiler", read_compiler(Declared(abi), abi, copy), official,
                   also=["IRadio, slot get_Name"]))
