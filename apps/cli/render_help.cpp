#include "apps/cli/render_help.h"

namespace ktl::cli {

const char *const kRenderHelp = R"(NAME
    ktl render - draw map files into an image

SYNOPSIS
    ktl render [STYLE...] SOURCE [STYLE...] [SOURCE [STYLE...]]... -o FILE [OPTION...]

DESCRIPTION
    Draws points, lines and areas from every SOURCE, later ones over earlier ones, and writes FILE. A SOURCE is a file
    or directory that OGR reads (GeoJSON, TopoJSON, Shapefile, GeoPackage, KML, GML and many more). Coordinates in
    another system than degrees are converted. What the map cannot show is cut off or left out, and counted in the
    report. If anything fails, no file is written or changed.

    The picture shows one level of the tile pyramid, 1 to 22, each twice as large as the one before. Level 1 is the
    world in 256 pixels. The deepest level is chosen at which everything asked for fits; the report tells what is shown.

OPTIONS
    -o, --output FILE     the image; the extension tells its format: .png, .jpg, .jpeg, .tif, .tiff, .gif or .bmp
    --size WxH            width and height in pixels, 1 to 10000 each and 50 megapixels in all (1024x768)
    --extent W,S,E,N      show all of this extent, in degrees
    --center L,B          show this longitude and latitude in the middle, at the level of --level
    --level N             the level for --center, 1 to 22
                          Without --extent and --center the picture shows everything in the sources.
    --degrees             draw longitude and latitude as x and y; without it the map is in Web Mercator, which ends at
                          85.0511 degrees north and south
    --map-type N          the number of a map type, which chooses between the two; 601 to 610 are the user-defined ones
                          of the configuration file
    --background COLOR    behind everything (white)
    --smooth              smooth edges; without it every pixel is drawn or not
    --georef              write side files too: a world file, FILE.aux.xml with the coordinate system, and a summary
                          under FILE's name with the extension .txt
    --json                report in JSON
    -h, --help            print this text

  Options that belong to a SOURCE
    Each applies to the SOURCE before it. One that stands before the first SOURCE applies to every SOURCE that does not
    set it itself. COLOR is #RRGGBB, #RGB or a name such as navy; where "none" is allowed, it leaves the thing out.

    --layer NAME          only this layer of the source
    --where FILTER        only features that this filter takes, as "population > 1000000"
    --fill COLOR|none     the inside of areas (#EFEBE1)
    --hatch NAME|N|none   hatch areas in the fill colour: a name such as Cross, DiagonalBrick, LightUpwardDiagonal, or
                          its number from 0 to 52
    --hatch-back COLOR    between the strokes of a hatch (white)
    --line COLOR|none     lines, and outlines of areas (#5B6F85)
    --line-width N        their width in pixels, 1 to 64 (1)
    --line-style NAME     of lines: solid, cased, rail, dash, dot, dashdot or dashdotdot (solid)
    --dash A,B[,...]      dash lines by this pattern: lengths of dashes and gaps in line widths
    --casing COLOR        the outer colour of cased, rail and dashed lines, one pixel wider on each side (white; for
                          rail, which is white inside, the colour of --line)
    --point COLOR|none    points (#C0392B)
    --point-line COLOR|none
                          the outline of points; none takes the colour of the points (white)
    --point-size N        their diameter in pixels, 1 to 64 (5)
    --symbol FILE         a .png or .gif picture drawn at each point instead
    --alpha N             opacity of all of these, from 0 to 255 (255)

ENVIRONMENT
    KTL_HOME              the folder of the configuration file Kartelo.ini and of error.log; without it
                          $XDG_DATA_HOME/ktl or ~/.local/share/ktl

EXAMPLES
    The world's countries:
        ktl render countries.geojson -o world.png

    Countries, and cities over them as larger red dots, of a part of the world, with side files:
        ktl render countries.geojson --fill beige cities.geojson --point red --point-size 7 \
            --extent 100,15,150,50 --size 1600x1200 --smooth --georef -o east.png

    A street map round a place:
        ktl render roads.shp --line-width 3 --line-style cased --center 116.39,39.91 --level 15 -o streets.png

EXIT STATUS
    0    the files are written
    1    something could not be read, drawn or written
    2    the command line was not understood
    130  interrupted
)";

}  // namespace ktl::cli
