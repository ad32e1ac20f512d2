#include <core/setting.h>

#include <climits>

using namespace Qt::Literals::StringLiterals;

QList<Setting> hostSettings()
{
    using Kind = Setting::Kind;
    return {
        {.key = u"Host:dataFolder"_s,
         .meaning = u"Folder of the checks, the journal and the queue. It is created when missing, for its owner "
                    "only; one till at a time works with it. Default: the folder in which the program is started."_s,
         .example = u"/var/lib/kvo-till"_s},
        {.key = u"Queue:driver"_s,
         .kind = Kind::Choice,
         .defaultValue = u"QSQLITE"_s,
         .meaning = u"Where the queue is kept: QSQLITE is a file, QPSQL a PostgreSQL server."_s,
         .example = u"QPSQL"_s,
         .choices = {u"QSQLITE"_s, u"QPSQL"_s}},
        {.key = u"Queue:database"_s,
         .defaultValue = u"queue.db"_s,
         .meaning = u"The queue's file, relative to `Host:dataFolder`; with QPSQL the name of the database, which then "
                    "has to be given."_s,
         .example = u"kvo"_s},
        {.key = u"Queue:host"_s,
         .meaning = u"The PostgreSQL server. Default: this machine."_s,
         .example = u"db.store.example"_s},
        {.key = u"Queue:port"_s,
         .kind = Kind::Whole,
         .meaning = u"The server's port. Default: PostgreSQL's own."_s,
         .example = u"5432"_s,
         .lowest = 1,
         .highest = 65535},
        {.key = u"Queue:user"_s, .meaning = u"User name at the server."_s, .example = u"till"_s},
        {.key = u"Queue:password"_s, .meaning = u"Password at the server."_s, .example = u"secret"_s},
        {.key = u"Queue:options"_s,
         .meaning = u"Further options of libpq, separated by semicolons."_s,
         .example = u"sslmode=verify-full;sslrootcert=/etc/kvo/store-ca.pem"_s},
        {.key = u"Log:file"_s,
         .meaning = u"The log file, relative to the folder in which the program is started. Empty: no file; warnings "
                    u"and errors go to the standard error output."_s,
         .example = u"/var/log/kvo/till.log"_s},
        {.key = u"Log:level"_s,
         .kind = Kind::Choice,
         .defaultValue = u"INFO"_s,
         .meaning = u"The lowest level that is logged."_s,
         .example = u"DEBUG"_s,
         .choices = {u"ALL"_s, u"TRACE"_s, u"DEBUG"_s, u"INFO"_s, u"WARN"_s, u"ERROR"_s, u"FATAL"_s, u"OFF"_s}},
        {.key = u"Log:maxFileSize"_s,
         .kind = Kind::Whole,
         .defaultValue = u"10485760"_s,
         .meaning = u"Size in bytes at which a new log file is begun."_s,
         .example = u"1048576"_s,
         .lowest = 1,
         .highest = INT_MAX},
        {.key = u"Log:maxFiles"_s,
         .kind = Kind::Whole,
         .defaultValue = u"5"_s,
         .meaning = u"How many older log files are kept."_s,
         .example = u"10"_s,
         .lowest = 1,
         .highest = 1000},
    };
}
