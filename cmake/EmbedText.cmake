# Run by cmake -P: writes OUTPUT, a C++ source in which FUNCTION() gives the text of INPUT.
file(READ ${INPUT} text)
file(WRITE ${OUTPUT} "#include \"${HEADER}\"

const std::string& ${FUNCTION}()
{
    static const std::string text = R\"---(${text})---\";
    return text;
}
")
