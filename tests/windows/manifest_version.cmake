# A manifest tells the version that the project has, whichever that is.
foreach(program IN ITEMS quorvaner quorvanectl placer)
    set(PROJECT_VERSION 12.34.56)
    configure_file("${MANIFESTS}/${program}.manifest.in" "${MADE}/${program}.manifest" @ONLY)
    file(READ "${MADE}/${program}.manifest" text)
    if(NOT text MATCHES "<assemblyIdentity type=\"win32\" name=\"Quorvane[^ ]* version=\"12\\.34\\.56\\.0\"")
        message(FATAL_ERROR "${program}: another version stands in its manifest")
    endif()
endforeach()
