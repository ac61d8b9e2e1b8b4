# Run by cpack on the folder of each package, before it is packed: what Debian wants besides.
cmake_minimum_required(VERSION 3.25)
foreach(component package IN ZIP_LISTS CPACK_COMPONENTS_ALL CPACK_ORVANE_PACKAGES)
  set(root ${CPACK_TEMPORARY_DIRECTORY}/${component}/usr)
  set(documents ${root}/share/doc/${package})
  file(COPY ${CPACK_ORVANE_DEBIAN_FILES}/copyright ${CPACK_ORVANE_DEBIAN_FILES}/changelog
    DESTINATION ${documents})
  file(GLOB pages ${root}/share/man/man1/*.1)
  execute_process(COMMAND gzip -9nf ${pages} ${documents}/changelog COMMAND_ERROR_IS_FATAL ANY)
  file(MAKE_DIRECTORY ${root}/share/lintian/overrides)
  file(COPY_FILE ${CPACK_ORVANE_DEBIAN_FILES}/${package}.lintian-overrides
    ${root}/share/lintian/overrides/${package})
  # Debian's shell looks here.
  file(RENAME ${root}/share/zsh/site-functions ${root}/share/zsh/vendor-completions)
  file(GLOB programs ${root}/bin/* ${root}/libexec/orvane/*)
  execute_process(COMMAND strip --strip-unneeded --remove-section=.comment --remove-section=.note
    ${programs} COMMAND_ERROR_IS_FATAL ANY)
endforeach()
