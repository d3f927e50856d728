"""The table of formats: those that are read, most used first, and those that are written."""
import bmp_rows
import drawn_rows
import gif_rows
import heif_rows
import icon_rows
import jp2_rows
import jpeg_rows
import jxl_rows
import layered_rows
import old_rows
import png_rows
import pnm_rows
import tiff_rows
import webp_rows

FORMATS = (jpeg_rows.FORMAT, png_rows.FORMAT, *heif_rows.FORMATS, webp_rows.FORMAT, tiff_rows.FORMAT, gif_rows.FORMAT,
           *drawn_rows.FORMATS,
           jxl_rows.FORMAT, jp2_rows.FORMAT, layered_rows.FORMAT, *icon_rows.FORMATS, bmp_rows.FORMAT, pnm_rows.FORMAT,
           *old_rows.FORMATS)
