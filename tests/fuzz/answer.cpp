// The body of an answer, before and while it is parsed.
#include "host/net/answer.h"

#include "fuzz.h"

void fuzz(const QByteArray &input)
{
    const Answer answer = readAnswer(input);
    require((answer.kind == Answer::Unreadable) != answer.fault.isEmpty());
    require((answer.kind == Answer::Json) != answer.json.isNull());
}
