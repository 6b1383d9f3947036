#include "apps/algoserver/forms.h"

void AddFormOptions(CLI::App& command, nxFormArguments& form)
{
    command
        .add_option("--layout", form.layout,
                    "Who wrote the data, where the files do not tell it: see 'algoserver layouts'")
        ->type_name("NAME");
    command
        .add_option(
            "--columns", form.columns,
            "The columns of a file without a header row, as in time,open,high,low,close,volume; - is one "
            "that does not count")
        ->type_name("NAME,...");
    command
        .add_option("--product", form.product,
                    "The product of files without a column of it; without it their name is the product")
        ->type_name("NAME");
    command
        .add_option("--zone", form.zone,
                    "The zone of times that name none, such as America/New_York; else UTC")
        ->type_name("NAME");
    command
        .add_option("--date", form.date, "The day of files that hold times of day; else their name tells it")
        ->type_name("YYYY-MM-DD");
    command
        .add_option(
            "--date-order", form.dateOrder,
            "Whether 03/04/2024 is of March (mdy) or of April (dmy), where the first rows do not tell")
        ->check(CLI::IsMember({"dmy", "mdy"}));
    command.add_option("--price-scale", form.priceScale, "Prices are whole numbers of this, such as 0.0001")
        ->type_name("NUMBER");
}
