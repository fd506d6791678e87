# SPDX-License-Identifier: Apache-2.0
from collections.abc import Iterable, Sequence
from typing import Any, Protocol, TypeVar, overload

from numpy.typing import DTypeLike, NDArray

_Array = NDArray[Any]

class _Frame(Protocol):
    """An av.VideoFrame."""

    @property
    def width(self) -> int: ...
    @property
    def height(self) -> int: ...
    @property
    def format(self) -> Any: ...
    @property
    def planes(self) -> Any: ...

__version__: str
formats: tuple[str, ...]

class Unsupported(ValueError): ...

class Picture:
    def __init__(self, format: str, width: int, height: int, *,
                 standard: str | None = None) -> None: ...
    @staticmethod
    def wrap(arrays: _Array | Sequence[_Array], format: str, *,
             standard: str | None = None) -> Picture: ...
    @staticmethod
    def from_bytes(data: bytes | bytearray | memoryview | _Array, format: str,
                   width: int, height: int, *, alignment: int = 1,
                   standard: str | None = None) -> Picture: ...
    @staticmethod
    def from_av(frame: _Frame, *,
                standard: str | None = None) -> Picture: ...
    @property
    def format(self) -> str: ...
    @property
    def width(self) -> int: ...
    @property
    def height(self) -> int: ...
    @property
    def size(self) -> tuple[int, int]: ...
    @property
    def standard(self) -> str | None: ...
    @standard.setter
    def standard(self, name: str) -> None: ...
    @property
    def planes(self) -> tuple[_Array, ...]: ...
    def tobytes(self) -> bytes: ...
    def __array__(self, dtype: DTypeLike = None,
                  copy: bool | None = None) -> _Array: ...

_Source = Picture | _Frame
_Out = TypeVar("_Out", Picture, _Array)

# With `out` the result is that, else a new picture.
@overload
def convert(source: _Source, format: str | None = None, *,
            dither: bool = False, chroma: str = "as-it-is",
            standard: str | None = None, out: None = None) -> Picture: ...
@overload
def convert(source: _Source, format: str | None = None, *,
            dither: bool = False, chroma: str = "as-it-is",
            standard: str | None = None, out: _Out) -> _Out: ...
@overload
def scale(source: _Source, size: tuple[int, int] | None = None,
          format: str | None = None, *, rotation: str = "0",
          mode: str = "plain", filter: str = "plain",
          dither: bool = False, chroma: str = "as-it-is",
          standard: str | None = None,
          out: None = None) -> Picture: ...
@overload
def scale(source: _Source, size: tuple[int, int] | None = None,
          format: str | None = None, *, rotation: str = "0",
          mode: str = "plain", filter: str = "plain",
          dither: bool = False, chroma: str = "as-it-is",
          standard: str | None = None,
          out: _Out) -> _Out: ...
@overload
def turn(source: _Source, rotation: str, format: str | None = None, *,
         dither: bool = False, chroma: str = "as-it-is",
         standard: str | None = None, out: None = None) -> Picture: ...
@overload
def turn(source: _Source, rotation: str, format: str | None = None, *,
         dither: bool = False, chroma: str = "as-it-is",
         standard: str | None = None, out: _Out) -> _Out: ...
@overload
def tonemap(source: _Source, format: str | None = None, *, kind: str = "hdr10",
            source_nit: int = 0, measure: bool = False,
            full_range: bool = True, dither: bool = False,
            chroma: str = "as-it-is", out: None = None) -> Picture: ...
@overload
def tonemap(source: _Source, format: str | None = None, *, kind: str = "hdr10",
            source_nit: int = 0, measure: bool = False,
            full_range: bool = True, dither: bool = False,
            chroma: str = "as-it-is", out: _Out) -> _Out: ...
@overload
def thumbnail(source: _Source, size: int | tuple[int, int] | None = None,
              format: str | None = None, *, rotation: str = "0",
              prescale: int = 0, dither: bool = False,
              chroma: str = "as-it-is", standard: str | None = None,
              out: None = None) -> Picture: ...
@overload
def thumbnail(source: _Source, size: int | tuple[int, int] | None = None,
              format: str | None = None, *, rotation: str = "0",
              prescale: int = 0, dither: bool = False,
              chroma: str = "as-it-is", standard: str | None = None,
              out: _Out) -> _Out: ...
@overload
def sharpen(source: _Source, *, out: None = None) -> Picture: ...
@overload
def sharpen(source: _Source, *, out: _Out) -> _Out: ...
@overload
def deblock(source: _Source, strength: int, *,
            out: None = None) -> Picture: ...
@overload
def deblock(source: _Source, strength: int, *, out: _Out) -> _Out: ...

def fourcc(code: str | int) -> str | None: ...
def keyframes(units: Iterable[Any], codec: str) -> list[bool]: ...
