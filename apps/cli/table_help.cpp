#include "apps/cli/table_help.h"

namespace ktl::cli {

const char *const kTableHelp = R"(NAME
    ktl table - look into attribute tables, convert them, send them statements

SYNOPSIS
    ktl table info FILE [--layer NAME] [--csv | --json]
    ktl table show FILE [--layer NAME] [--limit N] [--csv | --json]
    ktl table search FILE WORD [--layer NAME] [--limit N] [--csv | --json]
    ktl table sql STORE STATEMENT [--csv | --json]
    ktl table import FILE TARGET.dbf [--layer NAME] [--overwrite]
    ktl table export FILE TARGET [--layer NAME] [--overwrite]

COMMANDS
    info      the columns and the number of rows
    show      the rows
    search    the rows with a cell that holds WORD, letter case and all
    sql       what a statement gives, or how many rows it changed
    import    makes a layer's table: ID and ShapeID in front, names of at most
              10 bytes, texts in GBK
    export    writes the rows in the format that TARGET's ending tells; of a
              layer's table without ID, ShapeID and the rows marked as deleted

ARGUMENTS
    FILE      a .dbf file, an .mdb file, a folder of .dbf files, or whatever
              else OGR opens
    STORE     a folder of .dbf files or one of them, an .mdb file, or a connection
              string with a Provider (VFPOLEDB.1, Microsoft.Jet.OLEDB.4.0,
              SQLOLEDB.1)

OPTIONS
    --layer NAME   the layer (of an .mdb file or a folder: the table) to read; the
                   first one without it
    --limit N      no more than N rows
    --csv          comma-separated values instead of aligned columns
    --json         JSON instead of aligned columns
    --overwrite    replaces a TARGET that is there, as a whole

EXAMPLES
    ktl table show roads.dbf --limit 10
    ktl table sql . "Select Top 5 * From w001 Where name Like '%国%' Order By ID"
    ktl table import countries.geojson w001.dbf
    ktl table export w001.dbf countries.gpkg

EXIT STATUS
    0    done
    1    something could not be read or written, or the statement is wrong
    2    the command line was not understood
    130  interrupted
)";

}  // namespace ktl::cli
