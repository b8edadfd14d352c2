"""parcelvane: reading, editing and writing Internet mail messages.

Two layers over the same library objects:

- Late binding, as script hosts drive the library: ``Dispatch("ParcelvaneLib.EMSMessageParser")``
  returns an object whose properties and methods are resolved by name, without regard to case.
- A Pythonic layer for the common jobs: ``parse``, ``Message``, ``mbox`` and ``maildir``.
"""

from parcelvane._native import (
    ComError,
    Dispatch,
    DispatchIterator,
    DispatchMethod,
    DispatchObject,
    live_objects,
)
from parcelvane._message import Address, Group, Message, Part, parse
from parcelvane._mailbox import maildir, mbox

__all__ = [
    "Address",
    "ComError",
    "Dispatch",
    "DispatchIterator",
    "DispatchMethod",
    "DispatchObject",
    "Group",
    "Message",
    "Part",
    "live_objects",
    "maildir",
    "mbox",
    "parse",
]

__version__ = "0.1.0"
