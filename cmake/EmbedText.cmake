# Run by cmake -P: writes OUTPUT, a C++ source in which FUNCTION() gives the text of INPUT. It is not counted in training, since counts only fit a source
# of the same path, and each build writes its own.
file(READ ${INPUT} text)
file(WRITE ${OUTPUT} "#include \"${HEADER}\"

[[gnu::no_profile_instrument_function]] const std::string& ${FUNCTION}()
{
    static const std::string text = R\"---(${text})---\";
    return text;
}
")
